#include <gtest/gtest.h>
#include <limits>

#include "recovery/DlxSQLiteParser.h"
#include "recovery/shaping/call_texts.h"

namespace ZkMobileBackup::shaping {
namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();

TEST(CallType, WithoutFlagsIsIncomingWhateverItsDuration) {
    EXPECT_EQ(callType(0, 0), "Incoming");
    EXPECT_EQ(callType(0, 75), "Incoming");
    EXPECT_EQ(callType(0, -1), "Incoming");
}

TEST(CallType, WithFlagsDependsOnDuration) {
    EXPECT_EQ(callType(5, 75), "Outgoing");
    EXPECT_EQ(callType(-1, 1), "Outgoing");
    EXPECT_EQ(callType(5, 0), "Failed");
    EXPECT_EQ(callType(kLowest, -1), "Failed");
}

TEST(CallDuration, OfNoneTellsWhatBecameOfTheCall) {
    EXPECT_EQ(callDuration(0, "Outgoing"), "Cancelled");
    EXPECT_EQ(callDuration(0, "Incoming"), "Missed");
    EXPECT_EQ(callDuration(0, "Failed"), "0 Second");
    EXPECT_EQ(callDuration(0, "incoming"), "");
    EXPECT_EQ(callDuration(0, ""), "");
    EXPECT_EQ(callDuration(0, std::nullopt), "");
}

TEST(CallDuration, ShowsTheLargestWholeUnitAlone) {
    EXPECT_EQ(callDuration(119, std::nullopt), "1 minute");
    EXPECT_EQ(callDuration(3599, std::nullopt), "59 minutes");
    EXPECT_EQ(callDuration(3 * 3600 + 59 * 60, std::nullopt), "3 hours");
    EXPECT_EQ(callDuration(kLargest, std::nullopt), "2562047788015215 hours");
}

TEST(CallDuration, SecondsAreCapitalisedMinutesAndHoursAreNot) {
    EXPECT_EQ(callDuration(1, "Incoming"), "1 Second");
    EXPECT_EQ(callDuration(2, "Incoming"), "2 Seconds");
    EXPECT_EQ(callDuration(59, "Incoming"), "59 Seconds");
    EXPECT_EQ(callDuration(60, "Incoming"), "1 minute");
    EXPECT_EQ(callDuration(75, "Outgoing"), "1 minute");
    EXPECT_EQ(callDuration(120, "Outgoing"), "2 minutes");
    EXPECT_EQ(callDuration(3600, "Outgoing"), "1 hour");
    EXPECT_EQ(callDuration(7199, "Outgoing"), "1 hour");
    EXPECT_EQ(callDuration(7200, "Outgoing"), "2 hours");
}

TEST(CallDuration, BelowZeroIsEmpty) {
    EXPECT_EQ(callDuration(-1, "Incoming"), "");
    EXPECT_EQ(callDuration(-3600, "Outgoing"), "");
    EXPECT_EQ(callDuration(kLowest, std::nullopt), "");
}

TEST(CallTexts, AreThoseOfTheParser) {
    EXPECT_EQ(DlxSQLiteParser::callTypeFormatFromTypeFlag(5, 75), "Outgoing");
    EXPECT_EQ(DlxSQLiteParser::callTypeFormatFromTypeFlag(0, 75), "Incoming");
    EXPECT_EQ(DlxSQLiteParser::durationTextFormatFromDuration(0, "Outgoing"), "Cancelled");
    EXPECT_EQ(DlxSQLiteParser::durationTextFormatFromDuration(75, std::nullopt), "1 minute");
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
