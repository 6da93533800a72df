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

std::string_view zoneSetting() {
    const char* setting = std::getenv("TZ");
    return setting != nullptr ? setting : kSystemZone;
}

bool canBeShown(double instant) {
    return std::abs(instant) <= kLargestInstant;  // false for what is no number, too
}

std::time_t wholeSeconds(double instant) {
    return static_cast<std::time_t>(std::floor(instant));
}

std::tm localTime(std::time_t instant) {
    std::tm fields{};
    localtime_r(&instant, &fields);
    return fields;
}

/// Held while the C library reads the zone setting and works by it: it frees and replaces what it has read before.
std::mutex& zoneInUse() {
    static std::mutex& mutex = *new std::mutex;  // never destroyed: jobs may still ask while the process ends
    return mutex;
}

/// At least four digits, the sign not counted.
std::string yearText(const std::tm& fields) {
    const int year = fields.tm_year + 1900;
    return fmt::format("{}{:04}", year < 0 ? "-" : "", std::abs(year));
}

std::string minuteText(const std::tm& fields) {
    return fmt::format("{}-{:02}-{:02} {:02}:{:02}", yearText(fields), fields.tm_mon + 1, fields.tm_mday,
                       fields.tm_hour, fields.tm_min);
}

/// A day of the computer's zone. Dates that follow each other fall on few days, and within a day the text of a date is
/// a matter of counting minutes: many times faster than asking the C library each time.
class LocalDay {
public:
    explicit LocalDay(std::time_t instant) : zone_(zoneSetting()) {
        const std::lock_guard lock(zoneInUse());
        tzset();  // localtime_r reads the zone setting only once by itself
        const std::tm fields = localTime(instant);
        start_ = instant - secondOfDay(fields);
        text_ = minuteText(fields);
        offsetFromGmt_ = fields.tm_gmtoff;
        countable_ = isShownAs(start_, fields, 0) && isShownAs(start_ + kDay - 1, fields, kDay - 1);
    }

    /// The day of `instant`: `last`, which is made anew where it does not hold the instant.
    static const LocalDay& of(std::time_t instant, std::optional<LocalDay>& last) {
        if (!last || !last->holds(instant)) last.emplace(instant);
        return *last;
    }

    // For the instant that the day was asked for.

    std::time_t offsetFromGmt() const { return offsetFromGmt_; }

    std::string textOf(std::time_t instant) const {
        std::string text = text_;
        if (!countable_) return text;
        const auto minutes = (instant - start_) / kMinute;
        writeTwoDigits(&text[text.size() - kHourFromEnd], minutes / 60);
        writeTwoDigits(&text[text.size() - kMinuteFromEnd], minutes % 60);
        return text;
    }

private:
    static constexpr std::time_t kMinute = 60;
    static constexpr std::time_t kHour = 60 * kMinute;
    static constexpr std::time_t kDay = 24 * kHour;
    // Places in a text that ends in "HH:mm".
    static constexpr std::size_t kHourFromEnd = 5;
    static constexpr std::size_t kMinuteFromEnd = 2;

    bool holds(std::time_t instant) const {
        return countable_ && instant >= start_ && instant < start_ + kDay && zone_ == zoneSetting();
    }

    static std::time_t secondOfDay(const std::tm& fields) {
        return fields.tm_hour * kHour + fields.tm_min * kMinute + fields.tm_sec;
    }

    static void writeTwoDigits(char* place, std::time_t number) {
        place[0] = static_cast<char>('0' + number / 10);
        place[1] = static_cast<char>('0' + number % 10);
    }

    static bool isShownAs(std::time_t instant, const std::tm& day, std::time_t second) {
        const std::tm fields = localTime(instant);
        return fields.tm_year == day.tm_year && fields.tm_yday == day.tm_yday && secondOfDay(fields) == second;
    }

    std::string zone_;
    // Of the instant that it was made for.
    std::string text_;
    std::time_t offsetFromGmt_ = 0;
    std::time_t start_ = 0;
    // Whether minutes can be counted from the start: not where clocks are changed that day, which is then made anew for
    // every instant.
    bool countable_ = false;
};

std::time_t presentOffsetFromGmt() {
    thread_local std::optional<LocalDay> today;
    return LocalDay::of(std::time(nullptr), today).offsetFromGmt();
}

}  // namespace

std::string Converter::formatedStringFromDate(Date date) {
    if (!canBeShown(date.secondsSince1970)) return {};
    thread_local std::optional<LocalDay> lastDay;
    const std::time_t instant = wholeSeconds(date.secondsSince1970);
    return LocalDay::of(instant, lastDay).textOf(instant);
}

Date Converter::dateWithSqliteTimeStamp(double seconds) {
    return {kSqliteEpoch + seconds};
}

std::string Converter::getTimeToShowWithTimestamp(std::string_view seconds) {
    const double instant = kReferenceDate + floatValue(seconds);
    if (!canBeShown(instant)) return {};
    const std::time_t shown = wholeSeconds(instant + static_cast<double>(presentOffsetFromGmt()));
    std::tm fields{};
    gmtime_r(&shown, &fields);
    return fmt::format("{}.{:02}.{:02} {:02}:{:02}:{:02}", yearText(fields), fields.tm_mon + 1, fields.tm_mday,
                       fields.tm_hour, fields.tm_min, fields.tm_sec);
}

}  // namespace ZkMobileBackup
