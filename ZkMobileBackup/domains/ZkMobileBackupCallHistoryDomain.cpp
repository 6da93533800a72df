#include "ZkMobileBackup/domains/ZkMobileBackupCallHistoryDomain.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupCallHistoryDomain> ZkMobileBackupCallHistoryDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupCallHistoryDomain>(new ZkMobileBackupCallHistoryDomain));
}

std::optional<std::string> ZkMobileBackupCallHistoryDomain::exportName() const {
    return "Callhistory";
}

}  // namespace ZkMobileBackup
