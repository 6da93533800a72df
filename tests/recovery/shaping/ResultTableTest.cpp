#include <algorithm>
#include <cctype>
#include <gmock/gmock.h>
#include <set>

#include "recovery/shaping/result_table.h"
#include "tests/recovery/shaping/ShapingTesting.h"
#include "tests/recovery/shaping/ZoneGuard.h"

namespace ZkMobileBackup::shaping {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::ZkMobileBackup::testing::Database;
using ::ZkMobileBackup::testing::ZoneGuard;

/// One of the shapings, with a database that yields two live rows and one deleted row.
struct Shaping {
    std::string table;
    std::vector<std::string> columns;
    std::vector<std::string> firstKeys;  ///< of a row, behind its identity
    std::shared_ptr<CustomTableObject> (*shape)(const Source& source);
    void (*fill)(Database& database);
    std::size_t reports;         ///< how many the shaping makes
    std::size_t firstRowReport;  ///< which one of them, counted from 1, follows the first live row
};

void PrintTo(const Shaping& shaping, std::ostream* out) {
    *out << shaping.table;
}

void fillReminders(Database& database) {
    database.add("CalendarItem", {"ROWID", "summary", "entity_type", "completion_date"},
                 {{"1", "buy", "3", "NULL"}, {"2", "event", "2", "NULL"}, {"3", "sell", "3", "5"}},
                 {{"-1", "gone", "3", "NULL"}});
}

void fillCalendar(Database& database) {
    database.add("CalendarItem", {"ROWID", "summary", "location_id", "entity_type"},
                 {{"1", "lunch", "1", "2"}, {"2", "reminder", "1", "3"}, {"3", "dinner", "1", "2"}},
                 {{"-1", "gone", "1", "2"}});
    database.add("Location", {"ROWID", "x", "title"}, {{"1", "", "here"}});
}

void fillBookmarks(Database& database) {
    database.add("bookmarks", {"id", "title", "url"}, {{"1", "a", "b"}, {"2", "c", "d"}}, {{"-1", "e", "f"}});
}

void fillNotes(Database& database) {
    database.add("ZNOTE", {"Z_PK", "ZTITLE", "ZMODIFICATIONDATE"}, {{"1", "one", "0"}, {"2", "two", "0"}});
    database.add("ZNOTEBODY", {"Z_PK", "ZCONTENT"}, {{"1", "text"}, {"2", "text"}, {"9", "dropped"}}, {{"-1", "lost"}});
}

void fillMessages(Database& database) {
    database.add("message", {"ROWID", "text", "date", "is_from_me"},
                 {{"1", "a", "0", "0"}, {"2", "b", "0", "1"}, {"3", "in no conversation", "0", "0"}},
                 {{"4", "gone", "0", "0"}});
    database.add("chat_message_join", {"chat_id", "message_id"}, {{"7", "1"}, {"8", "2"}, {"8", "4"}});
    database.add("chat", {"ROWID"}, {{"7", "", "", "", "", "", "123"}, {"8", "", "", "", "", "", "456"}});
}

void fillContacts(Database& database) {
    database.add("ABPerson", {"ROWID", "First", "Last", "Organization"},
                 {{"1", "Ada", "NULL", "Works"}, {"2", "Bob", "NULL", "NULL"}}, {{"3", "Cid", "NULL", "NULL"}});
    database.add("ABMultiValue", {"UID", "record_id", "label", "value"},
                 {{"1", "1", "1", "123"}, {"2", "2", "8", "bob@example.com"}}, {{"-1", "3", "7", "Lane 5"}});
}

void fillCalls(Database& database) {
    database.add("call", {"ROWID", "address", "date", "duration", "flags"},
                 {{"1", "123", "0", "60", "0"}, {"2", "456", "0", "0", "0"}}, {{"-1", "789", "0", "60", "5"}});
}

const std::vector<std::string> kReminderColumns{"title", "list", "status", "date"};
const std::vector<std::string> kCalendarColumns{"title", "startdate", "endDate", "location"};
const std::vector<std::string> kBookmarkColumns{"title", "url"};
const std::vector<std::string> kNoteColumns{"title", "date"};
const std::vector<std::string> kMessageColumns{"name", "phone", "email"};
const std::vector<std::string> kContactColumns{"name", "company", "mobilePhoneList", "emailList", "Note", "image"};
const std::vector<std::string> kCallColumns{"name", "phone", "date", "type", "duration"};

/// Tables that are made in one plain walk, and progress with it.
const std::vector<Shaping> kPlainShapings{
    {"Reminders", kReminderColumns, kReminderColumns, shapeReminders, fillReminders, 4, 1},
    {"Calendar", kCalendarColumns, kCalendarColumns, shapeCalendar, fillCalendar, 4, 1},
    {"BookMark", kBookmarkColumns, kBookmarkColumns, shapeBookmarks, fillBookmarks, 3, 1},
    {"Notes", kNoteColumns, kNoteColumns, shapeNotes, fillNotes, 4, 1},
};

/// Tables that name people. Messages are joined, with four reports, before the first conversation is made a row.
const std::vector<Shaping> kPeopleShapings{
    {"Message", kMessageColumns, kMessageColumns, [](const Source& source) { return shapeMessages(source, nullptr); },
     fillMessages, 6, 5},
    {"Contacts",
     kContactColumns,
     {"name", "company", "Note", "image"},
     [](const Source& source) {
         std::optional<Dictionary> contactsMap;
         return shapeContacts(source, contactsMap);
     },
     fillContacts,
     3,
     1},
    {"Call History", kCallColumns, kCallColumns, [](const Source& source) { return shapeCallHistory(source, nullptr); },
     fillCalls, 3, 1},
};

class EveryShaping : public ::testing::TestWithParam<Shaping> {
protected:
    std::shared_ptr<CustomTableObject> shaped() { return database_.shaped(GetParam().shape); }
    void expectNamedAndEmpty(const CustomTableObject& table) {
        EXPECT_EQ(table.name(), GetParam().table);
        EXPECT_EQ(table.filedList(), GetParam().columns);
        EXPECT_TRUE(table.rowList().empty());
        EXPECT_TRUE(table.deletedRowList().empty());
    }
    ZoneGuard zone_{"UTC0"};
    Database database_;
};

std::string testName(const ::testing::TestParamInfo<Shaping>& info) {
    std::string name = info.param.table;
    std::erase(name, ' ');
    return name;
}

INSTANTIATE_TEST_SUITE_P(PlainTables, EveryShaping, ::testing::ValuesIn(kPlainShapings), testName);
INSTANTIATE_TEST_SUITE_P(PeopleTables, EveryShaping, ::testing::ValuesIn(kPeopleShapings), testName);

TEST_P(EveryShaping, IsNamedAndEmptyWithoutRawTables) {
    expectNamedAndEmpty(*shaped());
    EXPECT_THAT(database_.reports, IsEmpty());
}

TEST_P(EveryShaping, IsNamedAndEmptyWhenStoppedBefore) {
    GetParam().fill(database_);
    database_.stop = true;
    expectNamedAndEmpty(*shaped());
    EXPECT_THAT(database_.reports, IsEmpty());
}

TEST_P(EveryShaping, KeepsLiveAndDeletedRowsApart) {
    GetParam().fill(database_);
    const auto table = shaped();
    EXPECT_EQ(table->name(), GetParam().table);
    EXPECT_EQ(table->filedList(), GetParam().columns);
    EXPECT_EQ(table->rowList().size(), 2U);
    EXPECT_EQ(table->deletedRowList().size(), 1U);
}

TEST_P(EveryShaping, StopInTheMiddleKeepsTheRowsMadeSoFar) {
    GetParam().fill(database_);
    database_.stopAfterReports = GetParam().firstRowReport;
    const auto table = shaped();
    EXPECT_EQ(table->rowList().size(), 1U);
    EXPECT_TRUE(table->deletedRowList().empty());
    EXPECT_EQ(database_.reports.size(), GetParam().firstRowReport);
}

TEST_P(EveryShaping, ReportsAfterEachRowAlsoWithoutOutput) {
    GetParam().fill(database_);
    shaped();
    ASSERT_EQ(database_.reports.size(), GetParam().reports);
    for (const auto& report : database_.reports) EXPECT_EQ(report.table, GetParam().table);
    EXPECT_EQ(database_.reports.back().deleted, 1);
    EXPECT_EQ(database_.reports.back().all, 3);
    const testing::Report& first = database_.reports[GetParam().firstRowReport - 1];
    EXPECT_EQ(first.deleted, 0);
    EXPECT_EQ(first.all, 1);
}

/// Live rows, then deleted ones.
std::vector<Dictionary> rowsOf(const CustomTableObject& table) {
    std::vector<Dictionary> rows;
    for (const RowList* list : {&table.rowList(), &table.deletedRowList()}) {
        for (const Row& row : *list) rows.push_back(*row.dictionary());
    }
    return rows;
}

TEST_P(EveryShaping, RowsBeginWithAnIdentityAndTheColumnsInOrder) {
    GetParam().fill(database_);
    std::vector<std::string> firstKeys = GetParam().firstKeys;
    firstKeys.insert(firstKeys.begin(), "RowData_Identify_Key");
    for (const Dictionary& row : rowsOf(*shaped())) {
        std::vector<std::string> keys = keysOf(row);
        keys.resize(firstKeys.size());
        EXPECT_EQ(keys, firstKeys);
    }
}

TEST_P(EveryShaping, RowsHaveIdentitiesOfTheirOwn) {
    GetParam().fill(database_);
    // Tables that are alive together keep their rows apart, too.
    const auto first = shaped();
    const auto second = shaped();
    std::set<std::string> identities;
    for (const auto& table : {first, second}) {
        for (const Dictionary& row : rowsOf(*table)) identities.insert(*row.text("RowData_Identify_Key"));
    }
    EXPECT_EQ(identities.size(), 6U);
}

TEST_P(EveryShaping, CalledTwiceBuildsTwoTables) {
    GetParam().fill(database_);
    const auto first = shaped();
    const auto second = shaped();
    EXPECT_NE(first, second);
    EXPECT_EQ(testing::contentOf(first->rowList()), testing::contentOf(second->rowList()));
    EXPECT_EQ(first->rowList().size(), 2U);
}

/// Name, columns and rows of every raw table.
std::vector<testing::Cells> textsOf(const Database& database) {
    std::vector<testing::Cells> texts;
    for (const auto& table : database.tables) {
        texts.push_back({*table->name()});
        texts.push_back(table->filedList());
        for (const RowList* rows : {&table->rowList(), &table->deletedRowList()}) {
            for (const Row& row : *rows) texts.push_back(row.texts());
            texts.push_back({"end of rows"});
        }
    }
    return texts;
}

TEST_P(EveryShaping, LeavesTheRawTablesAsTheyAre) {
    GetParam().fill(database_);
    const auto before = textsOf(database_);
    shaped();
    EXPECT_EQ(textsOf(database_), before);
}

TEST_P(EveryShaping, NeedsNobodyToReportTo) {
    GetParam().fill(database_);
    const auto table = GetParam().shape({.tables = database_.tables, .stop = database_.stop, .report = nullptr});
    EXPECT_EQ(table->rowList().size(), 2U);
}

TEST_P(EveryShaping, FindsRawTablesByTheirExactNameOnly) {
    GetParam().fill(database_);
    for (const auto& table : database_.tables) {
        std::string name = *table->name();
        name[0] = static_cast<char>(name[0] ^ 0x20);  // the other letter case
        table->setName(name);
    }
    expectNamedAndEmpty(*shaped());
}

TEST_P(EveryShaping, PassesOverATableWithoutAName) {
    database_.tables.push_back(std::make_shared<RawTableObject>());
    GetParam().fill(database_);
    EXPECT_EQ(shaped()->rowList().size(), 2U);
}

TEST_P(EveryShaping, UsesTheFirstOfTwoTablesOfOneName) {
    GetParam().fill(database_);
    Database decoy;
    GetParam().fill(decoy);
    for (const auto& table : decoy.tables) {
        table->rowList().clear();
        table->deletedRowList().clear();
        database_.tables.push_back(table);
    }
    EXPECT_EQ(shaped()->rowList().size(), 2U);
    std::rotate(database_.tables.begin(), database_.tables.end() - static_cast<std::ptrdiff_t>(decoy.tables.size()),
                database_.tables.end());
    expectNamedAndEmpty(*shaped());
}

TEST_P(EveryShaping, FindsColumnsWhateverTheirLetterCase) {
    GetParam().fill(database_);
    const auto expected = testing::contentOf(shaped()->rowList());
    for (const auto& table : database_.tables) {
        for (std::string& column : table->filedList()) {
            for (char& c : column) {
                if (std::isalpha(static_cast<unsigned char>(c)) != 0) c = static_cast<char>(c ^ 0x20);
            }
        }
    }
    EXPECT_EQ(testing::contentOf(shaped()->rowList()), expected);
}

TEST_P(EveryShaping, RowsWithoutCellsDoNoHarm) {
    GetParam().fill(database_);
    for (const auto& table : database_.tables) {
        table->rowList().append(std::vector<std::string>());
        table->deletedRowList().append(std::vector<std::string>());
    }
    EXPECT_GE(shaped()->rowList().size(), 2U);
}

TEST_P(EveryShaping, TablesWithoutColumnNamesDoNoHarm) {
    GetParam().fill(database_);
    for (const auto& table : database_.tables) table->filedList().clear();
    const auto table = shaped();
    EXPECT_EQ(table->name(), GetParam().table);
    EXPECT_EQ(table->filedList(), GetParam().columns);
}

std::vector<double> processValues(const Database& database) {
    std::vector<double> values;
    for (const auto& report : database.reports) values.push_back(report.process);
    return values;
}

TEST(Progress, OfRemindersIsExactly) {
    Database database;
    database.dbIndex = 2;
    fillReminders(database);
    database.shaped(shapeReminders);
    const double base = 2 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(
        processValues(database),
        ElementsAre(base + 0.027777777777777776 + (0 / 4.0) / 36.0,  //
                    base + 0.027777777777777776 + (1 / 4.0) / 36.0, base + 0.027777777777777776 + (2 / 4.0) / 36.0,
                    base + 0.027777777777777776 + (3 / 4.0) / 36.0));
}

TEST(Progress, OfTheCalendarIsExactly) {
    Database database;
    database.dbIndex = 2;
    fillCalendar(database);
    database.shaped(shapeCalendar);
    const double base = 2 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(processValues(database), ElementsAre(base + (0 / 4.0) / 36.0, base + (1 / 4.0) / 36.0,
                                                     base + (2 / 4.0) / 36.0, base + (3 / 4.0) / 36.0));
}

TEST(Progress, OfBookmarksIsExactly) {
    Database database;
    database.dbIndex = 5;
    fillBookmarks(database);
    database.shaped(shapeBookmarks);
    const double base = 5 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(processValues(database),
                ElementsAre(base + (0 / 3.0) / 18.0, base + (1 / 3.0) / 18.0, base + (2 / 3.0) / 18.0));
}

TEST(Progress, OfNotesIsExactly) {
    Database database;
    fillNotes(database);
    database.shaped(shapeNotes);
    const double base = 0 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(processValues(database), ElementsAre(base + (0 / 4.0) / 18.0, base + (1 / 4.0) / 18.0,
                                                     base + (2 / 4.0) / 18.0, base + (3 / 4.0) / 18.0));
}

TEST(Progress, OfTheFirstDatabaseLiesInItsShare) {
    for (const Shaping& shaping : kPlainShapings) {
        Database database;
        shaping.fill(database);
        database.shaped(shaping.shape);
        for (const double value : processValues(database)) {
            EXPECT_GE(value, 0.388) << shaping.table;
            EXPECT_LT(value, 0.4445) << shaping.table;
        }
    }
}

TEST(Progress, OfTheSeventhDatabaseGoesBeyondOne) {
    for (const Shaping& shaping : kPlainShapings) {
        Database database;
        database.dbIndex = 6;
        shaping.fill(database);
        database.shaped(shaping.shape);
        for (const double value : processValues(database)) EXPECT_GT(value, 1.0) << shaping.table;
    }
}

TEST(Progress, ReportThatIsKeptDoesNotChange) {
    Database database;
    fillBookmarks(database);
    std::vector<Dictionary> kept;
    shapeBookmarks({.tables = database.tables, .stop = database.stop, .report = [&](const Dictionary& progress) {
                        kept.push_back(progress);
                    }});
    ASSERT_EQ(kept.size(), 3U);
    EXPECT_EQ(*kept[0].find("Backup_All_Data_Key")->integer(), 1);
    EXPECT_EQ(*kept[2].find("Backup_All_Data_Key")->integer(), 3);
    EXPECT_EQ(kept[0].size(), 4U);
}

TEST(IndexOfColumn, ComparesInLowerCase) {
    EXPECT_EQ(indexOfColumn({"Z_PK", "ZTitle"}, "ZTITLE"), 1);
    EXPECT_EQ(indexOfColumn({"ÄNDERUNG"}, "änderung"), 0);
}

TEST(IndexOfColumn, TakesTheFirstOfTwo) {
    EXPECT_EQ(indexOfColumn({"a", "b", "B"}, "b"), 1);
}

TEST(IndexOfColumn, IsMinusOneForNone) {
    EXPECT_EQ(indexOfColumn({"a"}, "b"), -1);
    EXPECT_EQ(indexOfColumn({}, "b"), -1);
    EXPECT_EQ(indexOfColumn({"ab"}, "a"), -1);
}

TEST(NewResultRow, PresetsEveryColumnBehindTheIdentity) {
    const Dictionary row = newResultRow({"b", "a"});
    ASSERT_EQ(row.size(), 3U);
    EXPECT_EQ(row.keyAt(0), "RowData_Identify_Key");
    EXPECT_EQ(row.keyAt(1), "b");
    EXPECT_EQ(row.keyAt(2), "a");
    EXPECT_EQ(*row.text("a"), "");
    EXPECT_THAT(*row.text("RowData_Identify_Key"), ::testing::StartsWith("0x"));
}

TEST(NewResultRow, IdentityIsUniqueAlsoAmongMovedAndCopiedRows) {
    std::set<std::string> identities;
    std::vector<Dictionary> rows;
    for (int i = 0; i < 1000; ++i) rows.push_back(newResultRow({"a"}));
    for (const Dictionary& row : rows) identities.insert(*row.text("RowData_Identify_Key"));
    EXPECT_EQ(identities.size(), 1000U);
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
