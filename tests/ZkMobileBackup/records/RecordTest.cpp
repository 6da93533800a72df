#include <gtest/gtest.h>

#include "ZkMobileBackup/records/ZkMobileBackupAddressBookRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupCalendarRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupCallHistoryRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupMessageRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupMovieRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupNoteRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupReminderRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupSafariBookmarksRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupVoiceMailRecord.h"

namespace ZkMobileBackup {
namespace {

using BaseRecord = ZkMobileBackupAppDomainRecord;

Dictionary row(std::initializer_list<std::pair<std::string_view, Value>> entries) {
    Dictionary dictionary{{"RowData_Identify_Key", "0x1"}};
    for (const auto& [key, value] : entries) dictionary.set(key, value);
    return dictionary;
}

std::string exportedText(const std::string& text) {
    const auto record = ZkMobileBackupNoteRecord::initWithDictionary(row({{"text", text}}), false);
    return *record->exportValue()->text("text");
}

// ---- Any record ----

TEST(Record, KeepsItsRowAndFlags) {
    const auto live = BaseRecord::initWithDictionary(row({{"a", "1"}}), false);
    const auto deleted = BaseRecord::initWithDictionary(row({{"a", "1"}}), true);
    EXPECT_EQ(*live->recordValueForKey("a")->text(), "1");
    EXPECT_EQ(*live->recordValueForKey("RowData_Identify_Key")->text(), "0x1");
    EXPECT_EQ(live->recordValueForKey("b"), nullptr);
    EXPECT_FALSE(live->isDeleted());
    EXPECT_TRUE(deleted->isDeleted());
    EXPECT_FALSE(deleted->shouldRecovery());
}

TEST(Record, FlagsCanBeChanged) {
    const auto record = BaseRecord::initWithDictionary(row({}), false);
    record->setShouldRecovery(true);
    record->setIsDeleted(true);
    EXPECT_TRUE(record->shouldRecovery());
    EXPECT_TRUE(record->isDeleted());
    record->setShouldRecovery(false);
    record->setIsDeleted(false);
    EXPECT_FALSE(record->shouldRecovery());
    EXPECT_FALSE(record->isDeleted());
}

TEST(Record, LaterChangesOfTheRowDoNotReachIt) {
    Dictionary source = row({{"a", "1"}});
    const auto record = BaseRecord::initWithDictionary(source, false);
    source.set("a", "2");
    source.set("b", "3");
    EXPECT_EQ(*record->recordValueForKey("a")->text(), "1");
    EXPECT_EQ(record->recordValueForKey("b"), nullptr);
}

TEST(Record, WithoutARowKeepsNoValueAndIsNotDeleted) {
    const auto record = BaseRecord::initWithDictionary(std::nullopt, true);
    EXPECT_FALSE(record->isDeleted());
    EXPECT_FALSE(record->shouldRecovery());
    EXPECT_EQ(record->recordValueForKey("a"), nullptr);
    EXPECT_EQ(record->exportValue(), std::nullopt);
}

TEST(Record, WithAnEmptyRowIsDeletedWhenSaid) {
    EXPECT_TRUE(BaseRecord::initWithDictionary(Dictionary(), true)->isDeleted());
}

// ---- Base export value ----

TEST(ExportValue, DropsTheIdentityAndKeepsTheOrder) {
    const auto record = ZkMobileBackupCalendarRecord::initWithDictionary(
        row({{"title", "a"}, {"startdate", "b"}, {"endDate", ""}, {"location", "c"}}), false);
    EXPECT_EQ(*record->exportValue(),
              (Dictionary{{"title", "a"}, {"startdate", "b"}, {"endDate", ""}, {"location", "c"}}));
    EXPECT_NE(record->recordValueForKey("RowData_Identify_Key"), nullptr);
}

TEST(ExportValue, OfTwoLinesIsTheFirst) {
    EXPECT_EQ(exportedText("first\nsecond"), "first");
}

TEST(ExportValue, ThatBeginsWithATabIsEmpty) {
    EXPECT_EQ(exportedText("\tindented"), "");
    EXPECT_EQ(exportedText("\nsecond"), "");
}

TEST(ExportValue, VisibleAndEmptyTextsStayWhole) {
    EXPECT_EQ(exportedText("plain ~ text"), "plain ~ text");
    EXPECT_EQ(exportedText(""), "");
    EXPECT_EQ(exportedText("日本 \U0001F600 text"), "日本 \U0001F600 text");
}

TEST(ExportValue, IsCutBeforeUnitsFrom127To255) {
    EXPECT_EQ(exportedText("a\x7F"
                           "b"),
              "a");
    EXPECT_EQ(exportedText("日caf\u00E9 bar"), "日caf");
    EXPECT_EQ(exportedText("x\u0080y"), "x");
    EXPECT_EQ(exportedText("x\u00FFy"), "x");
    EXPECT_EQ(exportedText("x\u0100y"), "x\u0100y");
}

TEST(ExportValue, NeverCutsASurrogatePair) {
    EXPECT_EQ(exportedText("\U0001F600\u00E9\U0001F600"), "\U0001F600");
}

TEST(ExportValue, ValuesThatAreNoTextsPassUnchanged) {
    const Dictionary values{{"date", Date{5}}, {"size", Size{3, 4}},    {"number", 7},
                            {"half", 0.5},     {"list", Array{"a\nb"}}, {"none", Value()}};
    const auto record = ZkMobileBackupPhotoRecord::initWithDictionary(values, false);
    EXPECT_EQ(*record->exportValue(), values);
}

TEST(ExportValue, LeavesTheRecordAsItIs) {
    const auto record = ZkMobileBackupNoteRecord::initWithDictionary(row({{"text", "a\nb"}}), false);
    record->exportValue();
    EXPECT_EQ(*record->recordValueForKey("text")->text(), "a\nb");
}

template <typename Record>
class RecordWithBaseExport : public ::testing::Test {};

using BaseExportRecords =
    ::testing::Types<ZkMobileBackupCalendarRecord, ZkMobileBackupCallHistoryRecord, ZkMobileBackupReminderRecord,
                     ZkMobileBackupSafariBookmarksRecord, ZkMobileBackupNoteRecord, ZkMobileBackupVoiceMailRecord,
                     ZkMobileBackupMovieRecord, ZkMobileBackupPhotoRecord>;
TYPED_TEST_SUITE(RecordWithBaseExport, BaseExportRecords);

TYPED_TEST(RecordWithBaseExport, CutsTexts) {
    const std::shared_ptr<BaseRecord> record = TypeParam::initWithDictionary(row({{"x", "a\nb"}}), true);
    EXPECT_EQ(*record->exportValue(), (Dictionary{{"x", "a"}}));
    EXPECT_TRUE(record->isDeleted());
}

// ---- Keys ----

template <typename Record>
void expectKeys(const RecordKeys& keys) {
    ASSERT_NE(Record::recordKeys(), nullptr);
    EXPECT_EQ(*Record::recordKeys(), keys);
    EXPECT_EQ(Record::recordKeys(), Record::recordKeys());
    const std::shared_ptr<BaseRecord> record = Record::initWithDictionary(row({}), false);
    EXPECT_EQ(record->keysOfClass(), Record::recordKeys());
}

TEST(RecordKeys, AreTheColumnsOfEachClass) {
    expectKeys<ZkMobileBackupAddressBookRecord>(
        {"name", "company", "mobilePhoneList", "addressList", "homePhoneList", "emailList", "Note"});
    expectKeys<ZkMobileBackupMessageRecord>({"name", "phone", "email", "textlist"});
    expectKeys<ZkMobileBackupCalendarRecord>({"title", "startdate", "endDate", "location"});
    expectKeys<ZkMobileBackupCallHistoryRecord>({"name", "phone", "date", "type", "duration"});
    expectKeys<ZkMobileBackupReminderRecord>({"title", "list", "status", "date"});
    expectKeys<ZkMobileBackupSafariBookmarksRecord>({"title", "url"});
    expectKeys<ZkMobileBackupNoteRecord>({"title", "date", "text"});
    expectKeys<ZkMobileBackupMovieRecord>({"title", "duration", "resolution", "size"});
    expectKeys<ZkMobileBackupPhotoRecord>({"title", "resolution", "thumbnail"});
}

TEST(RecordKeys, OfTheBaseAndOfVoiceMailAreNothing) {
    EXPECT_EQ(BaseRecord::recordKeys(), nullptr);
    EXPECT_EQ(ZkMobileBackupVoiceMailRecord::recordKeys(), nullptr);
    EXPECT_EQ(ZkMobileBackupVoiceMailRecord::initWithDictionary(row({}), false)->keysOfClass(), nullptr);
    EXPECT_EQ(BaseRecord::initWithDictionary(row({}), false)->keysOfClass(), nullptr);
}

}  // namespace
}  // namespace ZkMobileBackup
