#include <cmath>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

#include "recovery/Converter.h"
#include "tests/recovery/shaping/ZoneGuard.h"

namespace ZkMobileBackup {
namespace {

using testing::ZoneGuard;

constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";
constexpr const char* kIndia = "IST-5:30";
constexpr const char* kNepal = "NPT-5:45";

constexpr double kNoonInWinter = 1705320000;  // 2024-01-15 12:00:00 UTC
constexpr double kNoonInSummer = 1721044800;  // 2024-07-15 12:00:00 UTC

std::string shown(double secondsSince1970) {
    return Converter::formatedStringFromDate(Date{secondsSince1970});
}

/// A zone with summer time, two hours ahead, for the days around today alone.
std::string zoneWithSummerTimeToday() {
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    gmtime_r(&now, &fields);
    const int from = (fields.tm_yday + 362) % 365;
    const int to = (fields.tm_yday + 4) % 365;
    return "AAA0BBB-2," + std::to_string(from) + "," + std::to_string(to);
}

TEST(FormatedStringFromDate, ShowsMinutesInTheComputersZone) {
    const ZoneGuard zone("UTC0");
    EXPECT_EQ(shown(kNoonInWinter + 59), "2024-01-15 12:00");
}

TEST(FormatedStringFromDate, KnowsOffsetsOfPartsOfAnHour) {
    {
        const ZoneGuard zone(kIndia);
        EXPECT_EQ(shown(kNoonInWinter), "2024-01-15 17:30");
    }
    const ZoneGuard zone(kNepal);
    EXPECT_EQ(shown(kNoonInWinter), "2024-01-15 17:45");
}

TEST(FormatedStringFromDate, TakesTheOffsetAtTheInstantShown) {
    const ZoneGuard zone(kNewYork);
    EXPECT_EQ(shown(kNoonInWinter), "2024-01-15 07:00");
    EXPECT_EQ(shown(kNoonInSummer), "2024-07-15 08:00");
}

TEST(FormatedStringFromDate, FollowsAZoneThatChangesMeanwhile) {
    const ZoneGuard outer("UTC0");
    EXPECT_EQ(shown(0), "1970-01-01 00:00");
    {
        const ZoneGuard inner(kIndia);
        EXPECT_EQ(shown(0), "1970-01-01 05:30");
    }
    EXPECT_EQ(shown(0), "1970-01-01 00:00");
}

TEST(FormatedStringFromDate, FollowsAZoneThatComesBack) {
    {
        const ZoneGuard first(kNewYork);
        EXPECT_EQ(shown(kNoonInWinter), "2024-01-15 07:00");
    }
    const ZoneGuard second(kNewYork);
    EXPECT_EQ(shown(kNoonInSummer), "2024-07-15 08:00");
}

TEST(FormatedStringFromDate, RoundsDownBeforeAndAfter1970) {
    const ZoneGuard zone("UTC0");
    EXPECT_EQ(shown(59.999), "1970-01-01 00:00");
    EXPECT_EQ(shown(-0.25), "1969-12-31 23:59");
}

TEST(FormatedStringFromDate, YearsHaveAtLeastFourDigits) {
    const ZoneGuard zone("UTC0");
    EXPECT_EQ(shown(-61094217600.0), "0034-01-01 00:00");
    EXPECT_EQ(shown(-62167219200.0), "0000-01-01 00:00");
    EXPECT_EQ(shown(-62198755200.0), "-0001-01-01 00:00");
    EXPECT_EQ(shown(253402300800.0), "10000-01-01 00:00");
}

TEST(FormatedStringFromDate, InstantsBeyondTheLimitAreEmpty) {
    const ZoneGuard zone(kNewYork);
    EXPECT_NE(shown(6.0e16), "");
    EXPECT_NE(shown(-6.0e16), "");
    EXPECT_EQ(shown(6.0e16 + 8), "");
    EXPECT_EQ(shown(-6.0e16 - 8), "");
    EXPECT_EQ(shown(std::numeric_limits<double>::infinity()), "");
    EXPECT_EQ(shown(std::numeric_limits<double>::quiet_NaN()), "");
}

std::string shownByCLibrary(std::time_t instant) {
    tzset();
    std::tm fields{};
    localtime_r(&instant, &fields);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &fields)};
}

class FormattedDatesAroundClockChanges : public ::testing::TestWithParam<const char*> {
protected:
    static constexpr std::time_t kYearStart = 1704067200;  // 2024
    static constexpr std::time_t kHalfHour = 30 * 60;
    static constexpr std::time_t kHalfHoursInYear = 366 * 48;
    ZoneGuard zone_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Zones, FormattedDatesAroundClockChanges,
                         ::testing::Values(kNewYork, kIndia, "UTC0",
                                           "AAA3BBB,M10.3.0/0,M2.3.0/0",            // at midnight
                                           "AAA-10:30BBB-11,M10.1.0,M4.1.0",        // by half an hour
                                           "AAA5BBB,M3.2.0/-1:59:59,M11.1.0/24:00"  // within a minute of midnight
                                           ));

TEST_P(FormattedDatesAroundClockChanges, AreThoseOfTheCLibraryInAscendingOrder) {
    for (std::time_t i = 0; i < kHalfHoursInYear; ++i) {
        for (const std::time_t second : {i * kHalfHour - 1, i * kHalfHour}) {
            ASSERT_EQ(shown(static_cast<double>(kYearStart + second)), shownByCLibrary(kYearStart + second));
        }
    }
}

TEST_P(FormattedDatesAroundClockChanges, AreThoseOfTheCLibraryInNoOrder) {
    constexpr std::time_t kStep = 7919;
    for (std::time_t i = 0; i < kHalfHoursInYear; ++i) {
        const std::time_t instant = kYearStart + i * kStep % kHalfHoursInYear * kHalfHour;
        ASSERT_EQ(shown(static_cast<double>(instant)), shownByCLibrary(instant));
    }
}

TEST(FormatedStringFromDate, IsTheSameOnEveryThread) {
    const ZoneGuard zone(kNewYork);
    std::vector<std::thread> threads;
    for (const double start : {kNoonInWinter, kNoonInSummer}) {
        threads.emplace_back([start] {
            const std::string expected = start == kNoonInWinter ? "2024-01-15 07:00" : "2024-07-15 08:00";
            for (int i = 0; i < 1000; ++i) EXPECT_EQ(shown(start + i % 60), expected);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(DateWithSqliteTimeStamp, IsOneSecondEarly) {
    EXPECT_EQ(Converter::dateWithSqliteTimeStamp(0), Date{978307199});
    EXPECT_EQ(Converter::dateWithSqliteTimeStamp(1), Date{978307200});
    const ZoneGuard zone("UTC0");
    EXPECT_EQ(Converter::formatedStringFromDate(Converter::dateWithSqliteTimeStamp(0)), "2000-12-31 23:59");
}

TEST(DateWithSqliteTimeStamp, CountsFractionsAndBackwards) {
    EXPECT_EQ(Converter::dateWithSqliteTimeStamp(0.5), Date{978307199.5});
    EXPECT_EQ(Converter::dateWithSqliteTimeStamp(-978307199), Date{0});
}

TEST(GetTimeToShowWithTimestamp, CountsFromTheReferenceDateItself) {
    const ZoneGuard zone("UTC0");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("0"), "2001.01.01 00:00:00");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("400000000"), "2013.09.04 15:06:40");
}

TEST(GetTimeToShowWithTimestamp, ReadsTheLeadingNumber) {
    const ZoneGuard zone("UTC0");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("NULL"), "2001.01.01 00:00:00");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp(""), "2001.01.01 00:00:00");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("61.99 seconds"), "2001.01.01 00:01:01");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("-0.5"), "2000.12.31 23:59:59");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp(".5e1"), "2001.01.01 00:00:05");
}

TEST(GetTimeToShowWithTimestamp, TakesTodaysOffsetWhateverTheInstant) {
    const ZoneGuard zone(zoneWithSummerTimeToday());
    const double now = static_cast<double>(std::time(nullptr));
    const double halfAYearAgo = now - 182 * 86400.0;
    const double dayStart = halfAYearAgo - std::fmod(halfAYearAgo, 86400.0);
    const std::string text = Converter::getTimeToShowWithTimestamp(std::to_string(dayStart - 978307200));
    EXPECT_EQ(text.substr(text.size() - 8), "02:00:00");
    const std::string atThatInstant = shown(dayStart);
    EXPECT_EQ(atThatInstant.substr(atThatInstant.size() - 5), "00:00");
}

TEST(GetTimeToShowWithTimestamp, KnowsOffsetsOfPartsOfAnHour) {
    const ZoneGuard zone(kIndia);
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("0"), "2001.01.01 05:30:00");
}

TEST(GetTimeToShowWithTimestamp, InstantsBeyondTheLimitAreEmpty) {
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("1e17"), "");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("-1e17"), "");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("1e999"), "");
    EXPECT_NE(Converter::getTimeToShowWithTimestamp("5.9e16"), "");
}

TEST(GetTimeToShowWithTimestamp, YearsHaveAtLeastFourDigits) {
    const ZoneGuard zone("UTC0");
    EXPECT_EQ(Converter::getTimeToShowWithTimestamp("-62072524800"), "0034.01.01 00:00:00");
}

}  // namespace
}  // namespace ZkMobileBackup
