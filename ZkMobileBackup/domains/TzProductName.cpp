#include "ZkMobileBackup/domains/TzProductName.h"

namespace ZkMobileBackup {

const char TzProductName[] = "Velmora Retrievo";

}  // namespace ZkMobileBackup
