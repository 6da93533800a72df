#include <gmock/gmock.h>

#include "ZkMobileBackup/records/ZkMobileBackupMessageRecord.h"

namespace ZkMobileBackup {
namespace {

Dictionary item(const char* flag, const char* date, const char* text) {
    return {{"detail_text", text}, {"detail_date", date}, {"detail_sent_flag", flag}};
}

std::optional<Dictionary> exported(const Dictionary& row) {
    return ZkMobileBackupMessageRecord::initWithDictionary(row, false)->exportValue();
}

Value exportedItems(Array items) {
    return *exported({{"textlist", std::move(items)}})->find("textlist");
}

TEST(MessageExport, ItemsBecomeTexts) {
    EXPECT_EQ(exportedItems({item("1", "2012-01-02 03:04", "hello"), item("0", "2012-01-02 03:05", "you")}),
              Value(Array{"Send:2012-01-02 03:04 hello", "Received:2012-01-02 03:05 you"}));
}

TEST(MessageExport, OnlyTheFlagOneIsSent) {
    EXPECT_EQ(exportedItems({item("", "d", "t"), item("1 ", "d", "t"), item("01", "d", "t"), item("2", "d", "t")}),
              Value(Array{"Received:d t", "Received:d t", "Received:d t", "Received:d t"}));
}

TEST(MessageExport, LineFeedBecomesASpace) {
    EXPECT_EQ(exportedItems({item("1", "d", "two\nlines\t")}), Value(Array{"Send:d two lines "}));
}

TEST(MessageExport, EmptyDateAndTextKeepTheirBlank) {
    EXPECT_EQ(exportedItems({item("1", "", "")}), Value(Array{"Send: "}));
}

TEST(MessageExport, WhatAnItemLacksReadsNull) {
    EXPECT_EQ(exportedItems({Dictionary{{"detail_sent_flag", "1"}}, Dictionary{{"detail_text", "t"}}, "no item"}),
              Value(Array{"Send:(null) (null)", "Received:(null) t", "Received:(null) (null)"}));
}

TEST(MessageExport, OtherEntriesPassUncut) {
    const Dictionary row{{"RowData_Identify_Key", "0x1"},
                         {"name", "a\nb"},
                         {"phone", "\t1"},
                         {"email", ""},
                         {"textlist", Array{item("1", "d", "t")}}};
    EXPECT_EQ(*exported(row),
              (Dictionary{{"name", "a\nb"}, {"phone", "\t1"}, {"email", ""}, {"textlist", Array{"Send:d t"}}}));
}

TEST(MessageExport, WithoutItemsIsNothing) {
    EXPECT_EQ(exported({{"name", "a"}}), std::nullopt);
    EXPECT_EQ(ZkMobileBackupMessageRecord::initWithDictionary(std::nullopt, false)->exportValue(), std::nullopt);
}

TEST(MessageExport, EmptyOrForeignListGivesAnEmptyList) {
    EXPECT_EQ(exportedItems({}), Value(Array{}));
    EXPECT_EQ(*exported({{"textlist", "text"}})->find("textlist"), Value(Array{}));
}

}  // namespace
}  // namespace ZkMobileBackup
