#pragma once

#include "base/Api.h"

namespace ZkMobileBackup {

/// Name of the folder inside the host's output folder that every export writes to. Exports of movies do not make it.
ZKMB_API extern const char TzProductName[];

}  // namespace ZkMobileBackup
