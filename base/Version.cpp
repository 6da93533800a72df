#include "base/Version.h"

namespace ZkMobileBackup {

const char ZkMobileBackupVersionString[] = "1.0.0";
const double ZkMobileBackupVersionNumber = 1.0;

}  // namespace ZkMobileBackup
