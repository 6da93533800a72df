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

constexpr const char* kEpoch = "2000-12-31 23:59";

class Notes : public ::testing::Test {
protected:
    void addNotes(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("ZNOTE", {"Z_PK", "ZTITLE", "ZMODIFICATIONDATE"}, live, carved);
    }
    void addBodies(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("ZNOTEBODY", {"Z_PK", "ZCONTENT"}, live, carved);
    }
    std::shared_ptr<CustomTableObject> shaped() { return database_.shaped(shapeNotes); }
    ZoneGuard zone_{"UTC0"};
    Database database_;
};

TEST_F(Notes, JoinTitleDateAndText) {
    addNotes({{"3", "Shopping", "60.5"}});
    addBodies({{"3", "milk"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0),
              (Entries{{"title", "Shopping"}, {"date", "2001.01.01 00:01:00"}, {"text", "milk"}}));
}

TEST_F(Notes, TextIsNoColumnOfTheTable) {
    addNotes({});
    addBodies({});
    EXPECT_THAT(shaped()->filedList(), ElementsAre("title", "date"));
}

TEST_F(Notes, BothTablesAreNeeded) {
    addBodies({{"-1", "lost"}});
    EXPECT_TRUE(shaped()->deletedRowList().empty());
    EXPECT_TRUE(database_.reports.empty());
}

TEST_F(Notes, CarvedBodyWhoseKeyReadsZeroIsADeletedNote) {
    addNotes({{"0", "never", "0"}, {"-1", "never", "0"}});
    addBodies({}, {{"NULL", "lost text"}, {"0", "zero"}, {"-1", "minus one"}});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_EQ(entriesOf(table->deletedRowList(), 0), (Entries{{"title", ""}, {"date", kEpoch}, {"text", "lost text"}}));
    EXPECT_THAT(columnOf(table->deletedRowList(), "text"), ElementsAre("lost text", "zero", "minus one"));
}

TEST_F(Notes, LiveBodyWithoutKeyIsADeletedNoteToo) {
    addNotes({});
    addBodies({{"0", "live"}});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_THAT(columnOf(table->deletedRowList(), "text"), ElementsAre("live"));
}

TEST_F(Notes, EpochOfALostNoteIsShownInLocalTime) {
    const ZoneGuard zone("IST-5:30");
    addNotes({});
    addBodies({}, {{"-1", "lost"}});
    EXPECT_THAT(columnOf(shaped()->deletedRowList(), "date"), ElementsAre("2001-01-01 05:29"));
}

TEST_F(Notes, BodyWithoutItsNoteIsDropped) {
    addNotes({{"1", "a", "0"}});
    addBodies({{"2", "live"}}, {{"3", "carved"}});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_TRUE(table->deletedRowList().empty());
}

TEST_F(Notes, CarvedNotesAreNeverJoined) {
    addNotes({}, {{"2", "gone", "0"}});
    addBodies({{"2", "text"}});
    EXPECT_TRUE(shaped()->rowList().empty());
}

TEST_F(Notes, CarvedBodyThatMatchesALiveNoteIsALiveRow) {
    addNotes({{"2", "a", "0"}});
    addBodies({}, {{"2", "carved"}});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "text"), ElementsAre("carved"));
    EXPECT_TRUE(table->deletedRowList().empty());
}

TEST_F(Notes, TwoNotesOfOneKeyGiveTwoRowsInTheirOrder) {
    addNotes({{"2", "b", "0"}, {"1", "other", "0"}, {"2", "a", "0"}});
    addBodies({{"2", "text"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "title"), ElementsAre("b", "a"));
}

TEST_F(Notes, KeysAreComparedAsNumbers) {
    addNotes({{" 07", "seven", "0"}});
    addBodies({{"+7 and more", "text"}});
    EXPECT_THAT(columnOf(shaped()->rowList(), "title"), ElementsAre("seven"));
}

TEST_F(Notes, TitleAndDateAreTakenAsTheyStand) {
    addNotes({{"1", "NULL", "NULL"}});
    addBodies({{"1", "NULL"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0),
              (Entries{{"title", "NULL"}, {"date", "2001.01.01 00:00:00"}, {"text", "NULL"}}));
}

TEST_F(Notes, LengthOfTheNoteDecidesWhetherTheTextIsThere) {
    addNotes({{"1"}});
    addBodies({{"1", "text"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0), (Entries{{"title", ""}, {"date", ""}}));
}

TEST_F(Notes, LongNoteWithAShortBodyHasNoText) {
    addNotes({{"1", "a", "0"}});
    addBodies({{"1"}});
    EXPECT_EQ(entriesOf(shaped()->rowList(), 0), (Entries{{"title", "a"}, {"date", "2001.01.01 00:00:00"}}));
}

TEST_F(Notes, LostNoteWithoutATextHasNoTextKey) {
    addNotes({});
    addBodies({}, {{"-1"}, {}});
    const auto table = shaped();
    EXPECT_EQ(entriesOf(table->deletedRowList(), 0), (Entries{{"title", ""}, {"date", kEpoch}}));
    EXPECT_EQ(entriesOf(table->deletedRowList(), 1), (Entries{{"title", ""}, {"date", kEpoch}}));
}

TEST_F(Notes, MissingColumnsStayEmpty) {
    database_.add("ZNOTE", {"Z_PK"}, {{"1", "a", "0"}});
    database_.add("ZNOTEBODY", {"Z_PK"}, {{"1", "text"}}, {{"-1", "lost"}});
    const auto table = shaped();
    EXPECT_EQ(entriesOf(table->rowList(), 0), (Entries{{"title", ""}, {"date", ""}}));
    EXPECT_EQ(entriesOf(table->deletedRowList(), 0), (Entries{{"title", ""}, {"date", kEpoch}}));
}

TEST_F(Notes, ProgressCountsTheRowJustHandled) {
    addNotes({{"1", "a", "0"}, {"1", "b", "0"}});
    addBodies({{"1", "x"}, {"5", "dropped"}}, {{"-1", "lost"}});
    shaped();
    ASSERT_EQ(database_.reports.size(), 3U);
    EXPECT_EQ(database_.reports[0].all, 2);
    EXPECT_EQ(database_.reports[1].all, 2);
    EXPECT_EQ(database_.reports[2].all, 3);
    EXPECT_EQ(database_.reports[2].deleted, 1);
}

/// The join in its plainest form: a walk over all notes for each body.
std::vector<std::string> titlesByWalking(const RawTableObject& notes, const RawTableObject& bodies) {
    std::vector<std::string> titles;
    for (const RowList* rows : {&bodies.rowList(), &bodies.deletedRowList()}) {
        for (const Row& body : *rows) {
            const std::int64_t key = integerValue(body.cell(0));
            for (const Row& note : notes.rowList()) {
                if (key > 0 && integerValue(note.cell(0)) == key) titles.emplace_back(note.cell(1));
            }
        }
    }
    return titles;
}

TEST_F(Notes, JoinTheSameRowsAsAWalkOverAll) {
    std::mt19937 random(11);
    std::vector<Cells> notes;
    std::vector<Cells> live;
    std::vector<Cells> carved;
    const auto key = [&] { return std::to_string(static_cast<int>(random() % 90) - 10); };
    for (int i = 0; i < 200; ++i) {
        notes.push_back({key(), "note " + std::to_string(i), "0"});
        live.push_back({key(), "live"});
        carved.push_back({key(), "carved"});
    }
    addNotes(notes);
    addBodies(live, carved);
    EXPECT_EQ(columnOf(shaped()->rowList(), "title"), titlesByWalking(*database_.tables[0], *database_.tables[1]));
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
