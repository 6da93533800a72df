#include <gmock/gmock.h>

#include "tests/recovery/shaping/ShapingTesting.h"
#include "tests/recovery/shaping/ZoneGuard.h"
#include "tests/support/DatabaseBuilder.h"
#include "tests/support/RecordingDelegate.h"

namespace ZkMobileBackup {
namespace {

using testing::columnOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::Report;
using testing::reportOf;
using ::testing::ValuesIn;
using testing::ZoneGuard;

// The integer columns keep the free bytes of a page, which are zeros, from passing for rows.

/// Two reminders with an event between them.
void addCalendar(DatabaseBuilder& database) {
    database.exec(
        "CREATE TABLE CalendarItem (ROWID INTEGER PRIMARY KEY, summary TEXT, location_id INTEGER, entity_type INTEGER);"
        "INSERT INTO CalendarItem VALUES (1, 'buy', 1, 3), (2, 'lunch', 1, 2), (3, 'sell', 1, 3);"
        "CREATE TABLE Location (ROWID INTEGER PRIMARY KEY, owner INTEGER, title TEXT);"
        "INSERT INTO Location VALUES (1, 2, 'here')");
}

/// Two bookmarks, and one that was deleted.
void addBookmarks(DatabaseBuilder& database) {
    database.exec(
        "CREATE TABLE bookmarks (id INTEGER PRIMARY KEY, parent INTEGER, title TEXT, url TEXT);"
        "INSERT INTO bookmarks VALUES (1, 5, 'first', 'a'), (2, 5, 'deleted', 'b'), (3, 5, 'last', 'c');"
        "DELETE FROM bookmarks WHERE id = 2");
}

void addNotes(DatabaseBuilder& database) {
    database.exec(
        "CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, Z_OPT INTEGER, ZTITLE TEXT);"
        "INSERT INTO ZNOTE VALUES (1, 5, 'one'), (2, 5, 'two');"
        "CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, Z_OPT INTEGER, ZCONTENT TEXT);"
        "INSERT INTO ZNOTEBODY VALUES (1, 5, 'text'), (2, 5, 'text')");
}

/// Two persons, who have three values.
void addContacts(DatabaseBuilder& database) {
    database.exec(
        "CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First TEXT, Last TEXT, Kind INTEGER);"
        "INSERT INTO ABPerson VALUES (1, 'Ann', 'Lee', 5), (2, 'Bob', 'Ray', 5);"
        "CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, label INTEGER, value TEXT);"
        "INSERT INTO ABMultiValue VALUES (1, 1, 1, '+1-555-0100'), (2, 2, 1, '555-0101'), (3, 2, 8, "
        "'bob@example.com')");
}

/// Two conversations of a message each, and a message that was deleted.
void addMessages(DatabaseBuilder& database) {
    database.exec(
        "CREATE TABLE message (ROWID INTEGER PRIMARY KEY, text TEXT, date INTEGER, is_from_me INTEGER);"
        "INSERT INTO message VALUES (1, 'hello', 1000, 0), (2, 'deleted', 1000, 0), (3, 'bye', 1000, 0);"
        "DELETE FROM message WHERE ROWID = 2;"
        "CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER);"
        "INSERT INTO chat_message_join VALUES (1, 1), (2, 3);"
        "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY, guid TEXT, style INTEGER, state INTEGER, account TEXT, p TEXT,"
        " chat_identifier TEXT);"
        "INSERT INTO chat VALUES (1, 'g', 45, 3, 'me', 'p', '+15550100'), (2, 'g', 45, 3, 'me', 'p', '+15550101')");
}

/// Two calls, and one that was deleted.
void addCalls(DatabaseBuilder& database) {
    database.exec(
        "CREATE TABLE call (ROWID INTEGER PRIMARY KEY, address TEXT, date INTEGER, duration INTEGER, flags INTEGER);"
        "INSERT INTO call VALUES (1, '5550101', 1000, 60, 5), (2, '222', 1000, 60, 5), (3, '+15550100', 1000, 60, 5);"
        "DELETE FROM call WHERE ROWID = 2");
}

/// The tables of every application in one file.
const std::vector<std::uint8_t>& databaseBytes() {
    static const std::vector<std::uint8_t> bytes = [] {
        DatabaseBuilder database;
        for (const auto add : {addCalendar, addBookmarks, addNotes, addContacts, addMessages, addCalls}) add(database);
        return database.bytes();
    }();
    return bytes;
}

/// Asks the parser to stop once it has reported so many times.
class StoppingDelegate : public RecordingDelegate {
public:
    StoppingDelegate(DlxSQLiteParser& parser, std::size_t reports) : parser_(parser), most_(reports) {}
    void parserProcess(const Dictionary& progress) override {
        RecordingDelegate::parserProcess(progress);
        if (reports.size() == most_) parser_.setBStop(true);
    }

private:
    DlxSQLiteParser& parser_;
    std::size_t most_;
};

std::vector<Report> reportsOf(const RecordingDelegate& delegate) {
    std::vector<Report> reports;
    for (const Dictionary& progress : delegate.reports) reports.push_back(reportOf(progress));
    return reports;
}

constexpr std::int64_t kDbIndex = 2;
// Where the shaping of the third database begins.
constexpr double kStart = 2 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
constexpr double kHalf = 0.027777777777777776;

/// One of the parser's result tables, and what it reports while the table of the database above is made.
struct ResultTable {
    std::string name;
    std::vector<std::string> columns;
    std::shared_ptr<CustomTableObject> (*of)(DlxSQLiteParser& parser);
    std::vector<Report> reports;
};

void PrintTo(const ResultTable& table, std::ostream* out) {
    *out << table.name;
}

std::vector<ResultTable> resultTables() {
    return {
        {"Reminders",
         {"title", "list", "status", "date"},
         [](DlxSQLiteParser& parser) { return parser.customTableForReminderDB(); },
         {{kStart + kHalf + (0 / 3.0) / 36.0, 0, 1, "Reminders"},
          {kStart + kHalf + (1 / 3.0) / 36.0, 0, 1, "Reminders"},
          {kStart + kHalf + (2 / 3.0) / 36.0, 0, 2, "Reminders"}}},
        {"Calendar",
         {"title", "startdate", "endDate", "location"},
         [](DlxSQLiteParser& parser) { return parser.customTableForCalendarDB(); },
         {{kStart + (0 / 3.0) / 36.0, 0, 0, "Calendar"},
          {kStart + (1 / 3.0) / 36.0, 0, 1, "Calendar"},
          {kStart + (2 / 3.0) / 36.0, 0, 1, "Calendar"}}},
        {"BookMark",
         {"title", "url"},
         [](DlxSQLiteParser& parser) { return parser.customTableForBookmarksDB(); },
         {{kStart + (0 / 3.0) / 18.0, 0, 1, "BookMark"},
          {kStart + (1 / 3.0) / 18.0, 0, 2, "BookMark"},
          {kStart + (2 / 3.0) / 18.0, 1, 3, "BookMark"}}},
        {"Notes",
         {"title", "date"},
         [](DlxSQLiteParser& parser) { return parser.customTableForNotesDB(); },
         {{kStart + (0 / 2.0) / 18.0, 0, 1, "Notes"}, {kStart + (1 / 2.0) / 18.0, 0, 2, "Notes"}}},
        {"Contacts",
         {"name", "company", "mobilePhoneList", "emailList", "Note", "image"},
         [](DlxSQLiteParser& parser) { return parser.customTableForAddressBookDB(nullptr); },
         {{kStart + (1 / 3.0) / 18.0, 0, 1, "Contacts"}, {kStart + (2 / 3.0) / 18.0, 0, 2, "Contacts"}}},
        // The values of conversations and calls are those of a database that counts tables; without any they were 0.
        {"Message",
         {"name", "phone", "email"},
         [](DlxSQLiteParser& parser) { return parser.customTableForSMSDB(nullptr); },
         {{kStart + (0 / 3.0) / 36.0, 0, 0, "Message"},
          {kStart + (1 / 3.0) / 36.0, 0, 0, "Message"},
          {kStart + kHalf + (0 / 2.0) / 36.0, 1, 2, "Message"},
          {kStart + kHalf + (1 / 2.0) / 36.0, 1, 3, "Message"}}},
        {"Call History",
         {"name", "phone", "date", "type", "duration"},
         [](DlxSQLiteParser& parser) { return parser.customTableForCallHistoryDB(nullptr); },
         {{kStart + (1 / 2.0 + 0) / 18.0, 0, 1, "Call History"},
          {kStart + (2 / 2.0 + 0) / 18.0, 0, 2, "Call History"},
          {kStart + (3 / 2.0 + 1) / 18.0, 1, 3, "Call History"}}},
    };
}

std::int64_t rowCount(const CustomTableObject& table) {
    return static_cast<std::int64_t>(table.rowList().size() + table.deletedRowList().size());
}

/// A parser that has run, as the third of a larger run.
class ParserResultTables : public ::testing::Test {
protected:
    ParserResultTables() {
        parser_->setDbIndex(kDbIndex);
        parser_->parser();
    }
    ZoneGuard zone_{"UTC0"};
    std::shared_ptr<DlxSQLiteParser> parser_ = DlxSQLiteParser::initWithDBData(databaseBytes());
};

class EveryResultTable : public ParserResultTables, public ::testing::WithParamInterface<ResultTable> {
protected:
    std::shared_ptr<CustomTableObject> table() { return GetParam().of(*parser_); }
    void expectNamedAndEmpty(const CustomTableObject& table) {
        EXPECT_EQ(table.name(), GetParam().name);
        EXPECT_EQ(table.filedList(), GetParam().columns);
        EXPECT_EQ(rowCount(table), 0);
    }
};

INSTANTIATE_TEST_SUITE_P(Tables, EveryResultTable, ValuesIn(resultTables()), [](const auto& info) {
    std::string name = info.param.name;
    std::erase(name, ' ');
    return name;
});

TEST_P(EveryResultTable, ReportsItsProgressToTheDelegate) {
    RecordingDelegate delegate;
    parser_->setSqliteParserDelegate(&delegate);
    table();
    EXPECT_EQ(reportsOf(delegate), GetParam().reports);
    EXPECT_EQ(delegate.starts, 0);
    EXPECT_THAT(delegate.completions, IsEmpty());
}

TEST_P(EveryResultTable, ReportsProgressCountsAndNameInThisOrder) {
    RecordingDelegate delegate;
    parser_->setSqliteParserDelegate(&delegate);
    table();
    ASSERT_EQ(delegate.reports.size(), GetParam().reports.size());
    for (const Dictionary& progress : delegate.reports) {
        EXPECT_THAT(keysOf(progress), ElementsAre("Backup_Process_Key", "Backup_Deleted_Data_Key",
                                                           "Backup_All_Data_Key", "Backup_identify_Key"));
    }
}

TEST_P(EveryResultTable, HasTheRowsOfItsLastReport) {
    const auto made = table();
    EXPECT_EQ(made->name(), GetParam().name);
    EXPECT_EQ(made->filedList(), GetParam().columns);
    EXPECT_EQ(static_cast<std::int64_t>(made->deletedRowList().size()), GetParam().reports.back().deleted);
    EXPECT_EQ(rowCount(*made), GetParam().reports.back().all);
}

TEST_P(EveryResultTable, EndsEarlyWhenTheDelegateAsksToStop) {
    StoppingDelegate delegate(*parser_, 1);
    parser_->setSqliteParserDelegate(&delegate);
    const auto stopped = table();
    EXPECT_THAT(reportsOf(delegate), ElementsAre(GetParam().reports.front()));
    EXPECT_EQ(rowCount(*stopped), GetParam().reports.front().all);
    EXPECT_LT(rowCount(*stopped), GetParam().reports.back().all);
}

TEST_P(EveryResultTable, IsEmptyWhileAStopRequestStands) {
    RecordingDelegate delegate;
    parser_->setSqliteParserDelegate(&delegate);
    parser_->setBStop(true);
    expectNamedAndEmpty(*table());
    EXPECT_THAT(delegate.reports, IsEmpty());
}

TEST_P(EveryResultTable, OfAParserThatNeverRanIsNamedAndEmpty) {
    RecordingDelegate delegate;
    const auto parser = DlxSQLiteParser::initWithDBData(databaseBytes());
    parser->setSqliteParserDelegate(&delegate);
    expectNamedAndEmpty(*GetParam().of(*parser));
    EXPECT_THAT(delegate.reports, IsEmpty());
}

TEST_P(EveryResultTable, OfAParserWithoutAFileIsNamedAndEmpty) {
    const auto parser = DlxSQLiteParser::initWithDBPath("/no/such/file");
    EXPECT_FALSE(parser->parser());
    expectNamedAndEmpty(*GetParam().of(*parser));
}

TEST_F(ParserResultTables, ContactsAreTheSameWithAndWithoutAPlaceForTheirMap) {
    std::optional<Dictionary> map;
    const auto withMap = parser_->customTableForAddressBookDB(&map);
    const auto withoutMap = parser_->customTableForAddressBookDB(nullptr);
    EXPECT_THAT(columnOf(withMap->rowList(), "name"), ElementsAre("Ann Lee", "Bob Ray"));
    EXPECT_EQ(testing::contentOf(withMap->rowList()), testing::contentOf(withoutMap->rowList()));
    EXPECT_EQ(map, (Dictionary{{"15550100", "Ann Lee"}, {"5550101", "Bob Ray"}, {"bob@example.com", "Bob Ray"}}));
}

TEST_F(ParserResultTables, ContactsMapOfAParserThatNeverRanStaysAsItIs) {
    const Dictionary before{{"1", "Ada"}};
    std::optional<Dictionary> map = before;
    DlxSQLiteParser::initWithDBData(databaseBytes())->customTableForAddressBookDB(&map);
    EXPECT_EQ(map, before);
}

TEST_F(ParserResultTables, ContactsMapNamesThePartiesOfMessagesAndCalls) {
    std::optional<Dictionary> map;
    parser_->customTableForAddressBookDB(&map);
    ASSERT_TRUE(map);
    const auto messages = parser_->customTableForSMSDB(&*map);
    EXPECT_THAT(columnOf(messages->rowList(), "name"), ElementsAre("Ann Lee", "Unknown"));
    EXPECT_THAT(columnOf(messages->deletedRowList(), "name"), ElementsAre("Unknown"));
    const auto calls = parser_->customTableForCallHistoryDB(&*map);
    EXPECT_THAT(columnOf(calls->rowList(), "name"), ElementsAre("Bob Ray", "Ann Lee"));
    EXPECT_THAT(columnOf(calls->deletedRowList(), "name"), ElementsAre("Unknown"));
}

}  // namespace
}  // namespace ZkMobileBackup
