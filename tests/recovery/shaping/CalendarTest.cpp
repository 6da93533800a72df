#include <gmock/gmock.h>
#include <random>

#include "base/Text.h"
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

class Calendar : public ::testing::Test {
protected:
    void addItems(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("CalendarItem", {"ROWID", "summary", "location_id", "start_date", "end_date", "entity_type"},
                      live, carved);
    }
    void addLocations(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("Location", {"ROWID", "item", "title"}, live, carved);
    }
    std::vector<std::string> locationsFor(const std::string& key) {
        addItems({{"1", "a", key, "0", "0", "2"}});
        return columnOf(database_.shaped(shapeCalendar)->rowList(), "location");
    }
    std::shared_ptr<CustomTableObject> shaped() { return database_.shaped(shapeCalendar); }
    ZoneGuard zone_{"UTC0"};
    Database database_;
};

TEST_F(Calendar, ReadsTitleDatesAndLocation) {
    addItems({{"1", "lunch", "4", "3600", "7260", "2"}});
    addLocations({{"4", "1", "the corner"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0), (Entries{{"title", "lunch"},
                                                          {"startdate", "2001-01-01 01:00"},
                                                          {"endDate", "2001-01-01 02:01"},
                                                          {"location", "the corner"}}));
}

TEST_F(Calendar, DatesCountFromTheReferenceDateItself) {
    addItems({{"1", "a", "4", "0", "NULL", "2"}});
    addLocations({});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "startdate"), ElementsAre("2001-01-01 00:00"));
    EXPECT_THAT(columnOf(table->rowList(), "endDate"), ElementsAre("2001-01-01 00:00"));
}

TEST_F(Calendar, OnlyTypeTwoIsAnEvent) {
    addItems({{"1", "a", "4", "0", "0", "2"}, {"2", "b", "4", "0", "0", "3"}, {"3", "c", "4", "0", "0", "2"}},
             {{"-1", "d", "4", "0", "0", "NULL"}, {"-1", "e", "4", "0", "0", "2"}});
    addLocations({});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "title"), ElementsAre("a", "c"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "title"), ElementsAre("e"));
}

TEST_F(Calendar, EventsAndRemindersDivideTheItems) {
    addItems({{"1", "a", "4", "0", "0", "2"}, {"2", "b", "4", "0", "0", "3"}}, {{"-1", "c", "4", "0", "0", "NULL"}});
    addLocations({});
    EXPECT_THAT(columnOf(shaped()->rowList(), "title"), ElementsAre("a"));
    EXPECT_TRUE(shaped()->deletedRowList().empty());
    const auto reminders = database_.shaped(shapeReminders);
    EXPECT_THAT(columnOf(reminders->rowList(), "title"), ElementsAre("b"));
    EXPECT_THAT(columnOf(reminders->deletedRowList(), "title"), ElementsAre("c"));
}

TEST_F(Calendar, WithoutLocationTableIsEmptyButRemindersAreNot) {
    addItems({{"1", "a", "4", "0", "0", "2"}, {"2", "b", "4", "0", "0", "3"}});
    EXPECT_TRUE(shaped()->rowList().empty());
    EXPECT_TRUE(database_.reports.empty());
    EXPECT_EQ(database_.shaped(shapeReminders)->rowList().size(), 1U);
}

TEST_F(Calendar, WithoutTypeColumnIsEmpty) {
    database_.add("CalendarItem", {"ROWID", "summary", "location_id"}, {{"1", "a", "4"}});
    addLocations({});
    EXPECT_TRUE(shaped()->rowList().empty());
    EXPECT_TRUE(database_.reports.empty());
}

TEST_F(Calendar, WithoutDateColumnsDatesAreEmpty) {
    database_.add("CalendarItem", {"ROWID", "summary", "location_id", "entity_type"}, {{"1", "a", "4", "2"}});
    addLocations({{"4", "1", "x"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0),
              (Entries{{"title", "a"}, {"startdate", ""}, {"endDate", ""}, {"location", "x"}}));
}

TEST_F(Calendar, FirstLocationOfAKeyIsTaken) {
    addLocations({{"3", "1", "other"}, {"4", "1", "first"}, {"4", "1", "second"}});
    EXPECT_THAT(locationsFor("4"), ElementsAre("first"));
}

TEST_F(Calendar, LocationKeysAreComparedAsNumbers) {
    addLocations({{" +4 km", "1", "here"}});
    EXPECT_THAT(locationsFor("4.9"), ElementsAre("here"));
}

TEST_F(Calendar, NullKeyFindsALocationWhoseKeyReadsZero) {
    addLocations({{"NULL", "1", "nowhere"}});
    EXPECT_THAT(locationsFor("NULL"), ElementsAre("nowhere"));
}

TEST_F(Calendar, CarvedLocationsAreNeverConsulted) {
    addLocations({}, {{"4", "1", "gone"}});
    EXPECT_THAT(locationsFor("4"), ElementsAre(""));
}

TEST_F(Calendar, WithoutMatchTheLocationIsEmpty) {
    addLocations({{"5", "1", "elsewhere"}});
    EXPECT_THAT(locationsFor("4"), ElementsAre(""));
}

TEST_F(Calendar, FirstMatchDecidesAlsoWithoutATitle) {
    addLocations({{"4", "1"}, {"4", "1", "second"}});
    EXPECT_THAT(locationsFor("4"), ElementsAre(""));
}

TEST_F(Calendar, NullTitleOfALocationIsTakenAsItStands) {
    addLocations({{"4", "1", "NULL"}});
    EXPECT_THAT(locationsFor("4"), ElementsAre("NULL"));
}

TEST_F(Calendar, LocationWithoutKeyCellIsNoMatch) {
    addLocations({{}, {"0", "1", "zero"}});
    EXPECT_THAT(locationsFor("0"), ElementsAre("zero"));
}

TEST_F(Calendar, RowWithoutLocationCellHasNoLocation) {
    database_.add("CalendarItem", {"entity_type", "summary"}, {{"2", "a"}});
    addLocations({{"0", "1", "zero"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "location"), ElementsAre(""));
}

/// The join in its plainest form: a walk over all locations for each event.
std::vector<std::string> locationsByWalking(const RawTableObject& items, const RawTableObject& locations) {
    std::vector<std::string> found;
    for (const Row& item : items.rowList()) {
        found.emplace_back();
        for (const Row& location : locations.rowList()) {
            if (integerValue(location.cell(0)) != integerValue(item.cell(2))) continue;
            found.back() = location.cell(2);
            break;
        }
    }
    return found;
}

TEST_F(Calendar, FindsTheSameLocationsAsAWalkOverAll) {
    std::mt19937 random(7);
    std::vector<Cells> items;
    std::vector<Cells> locations;
    const auto key = [&] { return std::to_string(static_cast<int>(random() % 120) - 20); };
    for (int i = 0; i < 300; ++i) {
        items.push_back({"1", "a", key(), "0", "0", "2"});
        locations.push_back({key(), "1", "place " + std::to_string(i)});
    }
    addItems(items);
    addLocations(locations);
    EXPECT_EQ(columnOf(shaped()->rowList(), "location"),
              locationsByWalking(*database_.tables[0], *database_.tables[1]));
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
