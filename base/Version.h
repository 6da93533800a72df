#pragma once

#include "base/Api.h"

namespace ZkMobileBackup {

/// Version of the library as a text, "1.0.0".
ZKMB_API extern const char ZkMobileBackupVersionString[];
/// Version of the library as a number: major and minor, 1.0.
ZKMB_API extern const double ZkMobileBackupVersionNumber;

}  // namespace ZkMobileBackup
