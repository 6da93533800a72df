#include <gmock/gmock.h>

#include "tests/recovery/shaping/ShapingTesting.h"
#include "tests/recovery/shaping/ZoneGuard.h"

namespace ZkMobileBackup::shaping {
namespace {

using ::testing::ElementsAre;
using ::ZkMobileBackup::testing::Cells;
using ::ZkMobileBackup::testing::columnOf;
using ::ZkMobileBackup::testing::Database;
using ::ZkMobileBackup::testing::Entries;
using ::ZkMobileBackup::testing::entriesOf;
using ::ZkMobileBackup::testing::ZoneGuard;

constexpr const char* kEpoch = "2000-12-31 23:59";

class Reminders : public ::testing::Test {
protected:
    void add(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("CalendarItem", {"ROWID", "summary", "entity_type", "completion_date"}, live, carved);
    }
    std::shared_ptr<CustomTableObject> shaped() { return database_.shaped(shapeReminders); }
    ZoneGuard zone_{"UTC0"};
    Database database_;
};

TEST_F(Reminders, ReadTitleListStatusAndDate) {
    add({{"7", "water the plants", "3", "86401"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0), (Entries{{"title", "water the plants"},
                                                          {"list", "Reminders"},
                                                          {"status", "Completed"},
                                                          {"date", "2001-01-02 00:00"}}));
}

TEST_F(Reminders, UncompletedShowsTheEpochAsItsDate) {
    add({{"7", "a", "3", "NULL"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "status"), ElementsAre("Uncompleted"));
    EXPECT_THAT(columnOf(table->rowList(), "date"), ElementsAre(kEpoch));
}

TEST_F(Reminders, EpochIsShownInLocalTime) {
    const ZoneGuard zone("IST-5:30");
    add({{"7", "a", "3", "NULL"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "date"), ElementsAre("2001-01-01 05:29"));
}

TEST_F(Reminders, OnlyExactlyNullIsUncompleted) {
    add({{"7", "a", "3", "null"}, {"8", "b", "3", ""}, {"9", "c", "3", "0"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "status"), ElementsAre("Completed", "Completed", "Completed"));
    EXPECT_THAT(columnOf(table->rowList(), "date"), ElementsAre(kEpoch, kEpoch, kEpoch));
}

TEST_F(Reminders, EverythingButTypeTwoIsAReminder) {
    add({{"1", "type 2", "2", "NULL"},
         {"2", "type 3", "3", "NULL"},
         {"3", "type 0", "0", "NULL"},
         {"4", "type 2 with blanks", " 2x", "NULL"},
         {"5", "type 20", "20", "NULL"}},
        {{"-1", "type lost", "NULL", "NULL"}, {"-1", "deleted event", "2", "NULL"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "title"), ElementsAre("type 3", "type 0", "type 20"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "title"), ElementsAre("type lost"));
}

TEST_F(Reminders, TitleIsTakenAsItStands) {
    add({{"7", "NULL", "3", "NULL"}, {"8", "two\nlines", "3", "NULL"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "title"), ElementsAre("NULL", "two\nlines"));
}

TEST_F(Reminders, WithoutTypeColumnThereAreNone) {
    database_.add("CalendarItem", {"ROWID", "summary", "completion_date"}, {{"7", "a", "NULL"}});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_TRUE(database_.reports.empty());
}

TEST_F(Reminders, WithoutCompletionColumnStatusAndDateAreEmpty) {
    database_.add("CalendarItem", {"ROWID", "summary", "entity_type"}, {{"7", "a", "3"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0),
              (Entries{{"title", "a"}, {"list", "Reminders"}, {"status", ""}, {"date", ""}}));
}

TEST_F(Reminders, ShortRowsLeaveTheirColumnsEmpty) {
    add({{"7", "a", "3"}, {"8", "b"}, {"9"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "title"), ElementsAre("a", "b", ""));
    EXPECT_THAT(columnOf(table->rowList(), "status"), ElementsAre("", "", ""));
    EXPECT_THAT(columnOf(table->rowList(), "list"), ElementsAre("Reminders", "Reminders", "Reminders"));
}

TEST_F(Reminders, FirstOfTwoColumnsOfOneNameIsRead) {
    database_.add("CalendarItem", {"ROWID", "summary", "entity_type", "ENTITY_TYPE"}, {{"7", "a", "3", "2"}});
    EXPECT_EQ(shaped()->rowList().size(), 1U);
}

TEST_F(Reminders, DateBeyondTheCalendarIsEmpty) {
    add({{"7", "a", "3", "9223372036854775807"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "date"), ElementsAre(""));
}

TEST_F(Reminders, NeedNoLocationTable) {
    add({{"7", "a", "3", "NULL"}});
    EXPECT_EQ(shaped()->rowList().size(), 1U);
    EXPECT_TRUE(database_.shaped(shapeCalendar)->rowList().empty());
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
