#pragma once

#include <string>
#include <string_view>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

/// Times of the application databases. Every function may be called from any thread.
class ZKMB_API Converter {
public:
    // formatedStringFromDate:
    /// "yyyy-MM-dd HH:mm" in the computer's time zone, with the offset at that instant. Empty for an instant more than
    /// 6.0e16 seconds from 1970.
    static std::string formatedStringFromDate(Date date);

    // dateWithSqliteTimeStamp:
    /// The instant `seconds` after 2000-12-31 23:59:59 UTC: one second early, as every table that uses it reads.
    static Date dateWithSqliteTimeStamp(double seconds);

    // getTimeToShowWithTimestamp:
    /// "yyyy.MM.dd HH:mm:ss" of the instant that many seconds after 2001-01-01 00:00:00 UTC, in local time under the
    /// offset of the present moment.
    static std::string getTimeToShowWithTimestamp(std::string_view seconds);
};

}  // namespace ZkMobileBackup
