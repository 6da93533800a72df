#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupCalendarRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupNoteRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupReminderRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupSafariBookmarksRecord.h"
#include "tests/ZkMobileBackup/domains/DomainTesting.h"
#include "tests/support/DatabaseBuilder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;

std::string valueOf(const ZkMobileBackupAppDomainRecord& record, std::string_view key) {
    const Value* value = record.recordValueForKey(key);
    const std::string* text = value != nullptr ? value->text() : nullptr;
    return text != nullptr ? *text : "(no text)";
}

std::vector<std::string> valuesOf(const ZkMobileBackupAppDomain& domain, std::string_view key) {
    std::vector<std::string> values;
    for (const auto& record : domain.records()) values.push_back(valueOf(*record, key));
    return values;
}

template <typename Record>
bool allRecordsAre(const ZkMobileBackupAppDomain& domain) {
    return std::ranges::all_of(domain.records(),
                               [](const auto& record) { return dynamic_cast<const Record*>(record.get()) != nullptr; });
}

void addCalendarItems(DatabaseBuilder& database) {
    database.exec(
        "CREATE TABLE CalendarItem (ROWID INTEGER PRIMARY KEY, summary TEXT, location_id INTEGER, start_date INTEGER,"
        " end_date INTEGER, entity_type INTEGER, completion_date INTEGER)");
    database.insert("CalendarItem", {nullptr, "dentist", 7, 1000, 2000, 2, nullptr});
    database.insert("CalendarItem", {nullptr, "buy milk", 0, nullptr, nullptr, 3, nullptr});
    database.insert("CalendarItem", {nullptr, "concert", 0, 3000, 4000, 2, nullptr});
}

void addLocations(DatabaseBuilder& database) {
    database.exec("CREATE TABLE Location (ROWID INTEGER PRIMARY KEY, kind INTEGER, title TEXT)");
    database.insert("Location", {7, 1, "Main Street"});
}

std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> calendarDomains() {
    DatabaseBuilder database;
    addCalendarItems(database);
    addLocations(database);
    return domainsOf(databaseInfo("Calendar", database.bytes()));
}

TEST(TableRecords, LiveRowsComeBeforeDeletedOnes) {
    CustomTableObject table;
    for (const char* title : {"live 1", "live 2", "live 3"}) table.rowList().append(Dictionary{{"title", title}});
    for (const char* title : {"deleted 1", "deleted 2"}) table.deletedRowList().append(Dictionary{{"title", title}});
    ZkMobileBackupAppDomain::Records records;
    appendRecords<ZkMobileBackupSafariBookmarksRecord>(table, records);

    std::vector<std::pair<std::string, bool>> found;
    for (const auto& record : records) found.emplace_back(valueOf(*record, "title"), record->isDeleted());
    EXPECT_THAT(found, ElementsAre(std::pair("live 1", false), std::pair("live 2", false), std::pair("live 3", false),
                                   std::pair("deleted 1", true), std::pair("deleted 2", true)));
}

TEST(CalendarDatabase, GivesEachOfItsDomainsItsOwnRecords) {
    const auto domains = calendarDomains();
    ASSERT_EQ(domains.size(), 2u);
    for (const auto& domain : domains) parse(*domain);

    EXPECT_THAT(valuesOf(*domains[0], "title"), ElementsAre("dentist", "concert"));
    EXPECT_THAT(valuesOf(*domains[0], "location"), ElementsAre("Main Street", ""));
    EXPECT_TRUE(allRecordsAre<ZkMobileBackupCalendarRecord>(*domains[0]));

    EXPECT_THAT(valuesOf(*domains[1], "title"), ElementsAre("buy milk"));
    EXPECT_THAT(valuesOf(*domains[1], "status"), ElementsAre("Uncompleted"));
    EXPECT_TRUE(allRecordsAre<ZkMobileBackupReminderRecord>(*domains[1]));
}

TEST(CalendarDatabase, WithoutLocationsStillHasReminders) {
    DatabaseBuilder database;
    addCalendarItems(database);
    const auto domains = domainsOf(databaseInfo("Calendar", database.bytes()));
    for (const auto& domain : domains) parse(*domain);
    EXPECT_TRUE(domains[0]->records().empty());
    EXPECT_THAT(valuesOf(*domains[1], "title"), ElementsAre("buy milk"));
}

TEST(CalendarDatabase, BothDomainsMayParseAtOnce) {
    const auto domains = calendarDomains();
    std::size_t running = domains.size();
    for (const auto& domain : domains) {
        domain->parserWithCallbackBlock([&running](std::int64_t state, std::atomic<bool>*, double) {
            if (state == kFinishedState && --running == 0) MainQueue::stop();
        });
    }
    MainQueue::run();
    EXPECT_EQ(domains[0]->records().size(), 2u);
    EXPECT_EQ(domains[1]->records().size(), 1u);
}

TEST(BookmarksDatabase, GivesLiveRecordsThenDeletedOnes) {
    DatabaseBuilder database;
    database.exec("CREATE TABLE bookmarks (id INTEGER PRIMARY KEY, title VARCHAR, url VARCHAR)");
    for (const char* name : {"alpha", "bravo", "charlie", "delta", "echo"}) {
        database.insert("bookmarks", {nullptr, std::string(name), "http://" + std::string(name) + ".test/"});
    }
    database.exec("DELETE FROM bookmarks WHERE title IN ('bravo', 'delta')");
    const auto domain = domainsOf(databaseInfo("Bookmarks", database.bytes())).front();
    parse(*domain);

    std::vector<std::string> live;
    std::vector<std::string> deleted;
    for (const auto& record : domain->records()) {
        EXPECT_TRUE(record->isDeleted() || deleted.empty());
        (record->isDeleted() ? deleted : live).push_back(valueOf(*record, "title"));
    }
    EXPECT_THAT(live, ElementsAre("alpha", "charlie", "echo"));
    EXPECT_THAT(deleted, testing::IsSupersetOf({"bravo", "delta"}));
    EXPECT_TRUE(allRecordsAre<ZkMobileBackupSafariBookmarksRecord>(*domain));
}

TEST(NotesDatabase, GivesNotesWithTheirTexts) {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, ZMODIFICATIONDATE INTEGER, ZTITLE VARCHAR)");
    database.exec("CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, ZCONTENT VARCHAR)");
    database.insert("ZNOTE", {1, 5, 1000, "shopping"});
    database.insert("ZNOTEBODY", {1, 6, "eggs and flour"});
    const auto domain = domainsOf(databaseInfo("notes", database.bytes())).front();
    parse(*domain);
    EXPECT_THAT(valuesOf(*domain, "title"), ElementsAre("shopping"));
    EXPECT_THAT(valuesOf(*domain, "text"), ElementsAre("eggs and flour"));
    EXPECT_TRUE(allRecordsAre<ZkMobileBackupNoteRecord>(*domain));
}

TEST(VoicemailDatabase, IsParsedAndHasNoRecords) {
    DatabaseBuilder database;
    database.exec("CREATE TABLE voicemail (ROWID INTEGER PRIMARY KEY, sender TEXT, duration INTEGER)");
    database.insert("voicemail", {nullptr, "+100", 12});
    const auto domain = domainsOf(databaseInfo("voicemail", database.bytes())).front();
    EXPECT_EQ(parse(*domain).back(), (ParseEvent{3, 1.0}));
    EXPECT_EQ(domain->parser()->tableList().back()->rowList().size(), 1u);
    EXPECT_TRUE(domain->records().empty());
}

TEST(Databases, WithoutTheirTablesGiveNoRecords) {
    DatabaseBuilder database;
    database.exec("CREATE TABLE other (a TEXT, b TEXT)");
    database.insert("other", {"x", "y"});
    for (const char* name : {"AddressBook", "Calendar", "sms", "notes", "call_history", "Bookmarks", "voicemail"}) {
        for (const auto& domain : domainsOf(databaseInfo(name, database.bytes()))) {
            EXPECT_EQ(parse(*domain).back(), (ParseEvent{3, 1.0})) << name;
            EXPECT_TRUE(domain->records().empty()) << name;
        }
    }
}

}  // namespace
}  // namespace ZkMobileBackup
