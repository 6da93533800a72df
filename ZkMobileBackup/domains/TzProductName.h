#pragma once

#include "base/Api.h"

namespace ZkMobileBackup {

/// Name of the folder that every export makes inside the host's output folder.
ZKMB_API extern const char TzProductName[];

}  // namespace ZkMobileBackup
