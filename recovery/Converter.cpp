#include "recovery/Converter.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <fmt/format.h>
#include <mutex>
#include <optional>

#include "base/Text.h"
#include "recovery/epochs.h"

namespace ZkMobileBackup {

namespace {

// Day zero of January 2001 at 23:59:59, a second before the reference date: the tables have always shown their dates
// so, and two exports of one backup must agree.
constexpr double kSqliteEpoch = kReferenceDate - 1;

// Beyond this the C library's calendar runs out of years.
constexpr double kLargestInstant = 6.0e16;

/// What an unset TZ stands for.
constexpr const char* kSystemZone = ":/etc/localtime";

/// Makes localtime_r follow the zone setting, which it reads only once by itself. tzset alone would do, but may look at
/// the file system at every call.
void followZoneSetting() {
    static std::mutex mutex;
    static std::optional<std::string> followed;  // guarded by mutex
    const char* setting = std::getenv("TZ");
    const std::string_view zone = setting != nullptr ? setting : kSystemZone;
    const std::lock_guard lock(mutex);
    if (followed == zone) return;
    tzset();
    followed = zone;
}

bool canBeShown(double instant) {
    return std::abs(instant) <= kLargestInstant;  // false for what is no number, too
}

std::time_t wholeSeconds(double instant) {
    return static_cast<std::time_t>(std::floor(instant));
}

std::tm localTime(std::time_t instant) {
    followZoneSetting();
    std::tm fields{};
    localtime_r(&instant, &fields);
    return fields;
}

/// At least four digits, the sign not counted.
std::string yearText(const std::tm& fields) {
    const int year = fields.tm_year + 1900;
    return fmt::format("{}{:04}", year < 0 ? "-" : "", std::abs(year));
}

double presentOffsetFromGmt() {
    return static_cast<double>(localTime(std::time(nullptr)).tm_gmtoff);
}

}  // namespace

std::string Converter::formatedStringFromDate(Date date) {
    if (!canBeShown(date.secondsSince1970)) return {};
    const std::tm local = localTime(wholeSeconds(date.secondsSince1970));
    return fmt::format("{}-{:02}-{:02} {:02}:{:02}", yearText(local), local.tm_mon + 1, local.tm_mday, local.tm_hour,
                       local.tm_min);
}

Date Converter::dateWithSqliteTimeStamp(double seconds) {
    return {kSqliteEpoch + seconds};
}

std::string Converter::getTimeToShowWithTimestamp(std::string_view seconds) {
    const double instant = kReferenceDate + floatValue(seconds);
    if (!canBeShown(instant)) return {};
    const std::time_t shown = wholeSeconds(instant + presentOffsetFromGmt());
    std::tm fields{};
    gmtime_r(&shown, &fields);
    return fmt::format("{}.{:02}.{:02} {:02}:{:02}:{:02}", yearText(fields), fields.tm_mon + 1, fields.tm_mday,
                       fields.tm_hour, fields.tm_min, fields.tm_sec);
}

}  // namespace ZkMobileBackup
