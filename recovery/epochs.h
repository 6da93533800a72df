#pragma once

namespace ZkMobileBackup {

/// 2001-01-01 00:00:00 UTC in seconds since 1970: the phone's applications count from here.
inline constexpr double kReferenceDate = 978307200;

}  // namespace ZkMobileBackup
