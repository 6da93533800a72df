#include <gmock/gmock.h>

#include "tests/recovery/shaping/ShapingTesting.h"
#include "tests/recovery/shaping/ZoneGuard.h"

namespace ZkMobileBackup::shaping {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::ZkMobileBackup::testing::Cells;
using ::ZkMobileBackup::testing::columnOf;
using ::ZkMobileBackup::testing::Database;
using ::ZkMobileBackup::testing::Entries;
using ::ZkMobileBackup::testing::entriesOf;
using ::ZkMobileBackup::testing::Report;
using ::ZkMobileBackup::testing::ZoneGuard;

constexpr double kBase = 0.3333333333333333 + 0.05555555555555555;  // of the first database

class CallHistory : public ::testing::Test {
protected:
    void add(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        // Only the places of the cells count: no column has the name of what it holds.
        database_.add("call", {"a", "date", "flags", "address", "duration"}, live, carved);
    }
    std::shared_ptr<CustomTableObject> shaped(const Dictionary* contactsMap = nullptr) {
        return database_.shaped(shapeCallHistory, contactsMap);
    }
    ZoneGuard zone_{"UTC0"};
    Database database_;
};

TEST_F(CallHistory, IsNamedAndEmptyWithoutCalls) {
    database_.add("Call", {}, {{"1", "123"}});
    const auto table = shaped();
    EXPECT_EQ(table->name(), "Call History");
    EXPECT_THAT(table->filedList(), ElementsAre("name", "phone", "date", "type", "duration"));
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_TRUE(table->deletedRowList().empty());
    EXPECT_THAT(database_.reports, IsEmpty());
}

TEST_F(CallHistory, ReadsNumberDateTypeAndDuration) {
    const Dictionary map{{"123", "Ada"}};
    add({{"1", "123", "1362508200", "75", "5"}});
    EXPECT_EQ(entriesOf(shaped(&map)->rowList(), 0), (Entries{{"name", "Ada"},
                                                              {"phone", "123"},
                                                              {"date", "2013-03-05 18:30"},
                                                              {"type", "Outgoing"},
                                                              {"duration", "1 minute"}}));
}

TEST_F(CallHistory, CountsItsTimesFrom1970) {
    add({{"1", "123", "0", "0", "0"}, {"2", "123", "NULL", "0", "0"}, {"3", "123", "-60", "0", "0"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "date"),
                ElementsAre("1970-01-01 00:00", "1970-01-01 00:00", "1969-12-31 23:59"));
}

TEST_F(CallHistory, DateBeyondTheCalendarIsEmpty) {
    add({{"1", "123", "9223372036854775807"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "date"), ElementsAre(""));
}

TEST_F(CallHistory, UsesTheFirstOfTwoTables) {
    add({{"1", "a"}});
    add({{"2", "b"}}, {{"-1", "c"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "phone"), ElementsAre("a"));
    EXPECT_TRUE(table->deletedRowList().empty());
}

TEST_F(CallHistory, ShowsTimesInTheComputersZone) {
    const ZoneGuard zone("IST-5:30");
    add({{"1", "123", "0", "0", "0"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "date"), ElementsAre("1970-01-01 05:30"));
}

TEST_F(CallHistory, TellsMissedFailedIncomingAndOutgoingCalls) {
    add({{"1", "a", "0", "0", "0"},
         {"2", "b", "0", "0", "5"},
         {"3", "c", "0", "120", "0"},
         {"4", "d", "0", "7200", "1"},
         {"5", "e", "0", "-3", "1"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "type"),
                ElementsAre("Incoming", "Failed", "Incoming", "Outgoing", "Failed"));
    EXPECT_THAT(columnOf(table->rowList(), "duration"), ElementsAre("Missed", "0 Second", "2 minutes", "2 hours", ""));
}

TEST_F(CallHistory, WithoutContactsMapEverybodyIsUnknown) {
    add({{"1", "123", "0", "0", "0"}}, {{"-1", "+49123", "0", "0", "0"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "name"), ElementsAre("Unknown"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("Unknown"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "phone"), ElementsAre("+49123"));
}

TEST_F(CallHistory, NamesLiveAndCarvedCallsAlike) {
    const Dictionary map{{"123", "Ada"}, {"49555", "Bob"}};
    add({{"1", "+49123"}, {"2", "+49555"}, {"3", "123"}, {"4", "49123"}}, {{"-1", "+49123"}, {"-1", "123"}});
    const auto table = shaped(&map);
    EXPECT_THAT(columnOf(table->rowList(), "name"), ElementsAre("Ada", "Bob", "Ada", "Unknown"));
    EXPECT_THAT(columnOf(table->rowList(), "phone"), ElementsAre("+49123", "+49555", "123", "49123"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("Ada", "Ada"));
}

TEST_F(CallHistory, NumberIsTakenAsItStands) {
    add({{"1", "NULL"}, {"2", ""}, {"3", " 12-3"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "phone"), ElementsAre("NULL", "", " 12-3"));
}

TEST_F(CallHistory, CarvedCallOfNoDurationShowsNone) {
    add({}, {{"-1", "a", "0", "0", "0"}, {"-1", "b", "0", "0", "5"}, {"-1", "c", "0", "1", "0"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->deletedRowList(), "type"), ElementsAre("Incoming", "Failed", "Incoming"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "duration"), ElementsAre("", "", "1 Second"));
}

TEST_F(CallHistory, ShortRowsLeaveTheirColumnsEmpty) {
    add({{"1", "123", "0", "60"}, {"2", "123", "0"}, {"3", "123"}});
    EXPECT_EQ(entriesOf(shaped()->rowList()),
              (std::vector<Entries>{
                  {{"name", "Unknown"},
                   {"phone", "123"},
                   {"date", "1970-01-01 00:00"},
                   {"type", ""},
                   {"duration", "1 minute"}},
                  {{"name", "Unknown"}, {"phone", "123"}, {"date", "1970-01-01 00:00"}, {"type", ""}, {"duration", ""}},
                  {{"name", "Unknown"}, {"phone", "123"}, {"date", ""}, {"type", ""}, {"duration", ""}}}));
}

TEST_F(CallHistory, LostNumberIsNobodysAlsoWhenTheMapKnowsTheEmptyText) {
    const Dictionary map{{"", "Ada"}};
    add({{"1"}, {}}, {{"-1"}, {}});
    const auto table = shaped(&map);
    for (const RowList* rows : {&table->rowList(), &table->deletedRowList()}) {
        EXPECT_THAT(columnOf(*rows, "name"), ElementsAre("Unknown", "Unknown"));
        EXPECT_THAT(columnOf(*rows, "phone"), ElementsAre("", ""));
    }
}

TEST_F(CallHistory, ListsLiveAndDeletedCallsInTheirOrder) {
    add({{"1", "a"}, {"2", "b"}}, {{"-1", "c"}, {"-1", "d"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "phone"), ElementsAre("a", "b"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "phone"), ElementsAre("c", "d"));
}

TEST_F(CallHistory, ProgressIsExactly) {
    database_.dbIndex = 2;
    add({{"1", "a"}, {"2", "b"}, {"3", "c"}}, {{"-1", "d"}, {"-1", "e"}});
    shaped();
    const double base = 2 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(database_.reports, ElementsAre(Report{base + (1 / 3.0 + 0) / 18.0, 0, 1, "Call History"},
                                               Report{base + (2 / 3.0 + 0) / 18.0, 0, 2, "Call History"},
                                               Report{base + (3 / 3.0 + 0) / 18.0, 0, 3, "Call History"},
                                               Report{base + (4 / 3.0 + 1) / 18.0, 1, 4, "Call History"},
                                               Report{base + (5 / 3.0 + 2) / 18.0, 2, 5, "Call History"}));
}

TEST_F(CallHistory, ProgressWithoutLiveCallsCountsTheDeletedOnes) {
    add({}, {{"-1", "a"}, {"-1", "b"}});
    shaped();
    EXPECT_THAT(database_.reports, ElementsAre(Report{kBase + 1 / 18.0, 1, 1, "Call History"},
                                               Report{kBase + 2 / 18.0, 2, 2, "Call History"}));
}

TEST_F(CallHistory, ProgressOfADatabaseWithoutTablesIsZero) {
    database_.tableCount = 0;
    add({{"1", "a"}}, {{"-1", "b"}});
    shaped();
    EXPECT_THAT(database_.reports, ElementsAre(Report{0, 0, 1, "Call History"}, Report{0, 1, 2, "Call History"}));
}

TEST_F(CallHistory, StoppedBeforeHasNoRows) {
    add({{"1", "a"}}, {{"-1", "b"}});
    database_.stop = true;
    const auto table = shaped();
    EXPECT_EQ(table->name(), "Call History");
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_TRUE(table->deletedRowList().empty());
    EXPECT_THAT(database_.reports, IsEmpty());
}

TEST_F(CallHistory, StopAmongLiveCallsLeavesOutTheCarvedOnes) {
    add({{"1", "a"}, {"2", "b"}}, {{"-1", "c"}});
    database_.stopAfterReports = 1;
    const auto table = shaped();
    EXPECT_EQ(table->rowList().size(), 1U);
    EXPECT_TRUE(table->deletedRowList().empty());
    EXPECT_EQ(database_.reports.size(), 1U);
}

TEST_F(CallHistory, StopAmongCarvedCallsKeepsThoseMade) {
    add({{"1", "a"}}, {{"-1", "b"}, {"-1", "c"}});
    database_.stopAfterReports = 2;
    const auto table = shaped();
    EXPECT_EQ(table->rowList().size(), 1U);
    EXPECT_EQ(table->deletedRowList().size(), 1U);
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
