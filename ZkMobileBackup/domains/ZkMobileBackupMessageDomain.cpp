#include "ZkMobileBackup/domains/ZkMobileBackupMessageDomain.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupMessageDomain> ZkMobileBackupMessageDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupMessageDomain>(new ZkMobileBackupMessageDomain));
}

std::optional<std::string> ZkMobileBackupMessageDomain::exportName() const {
    return "Message";
}

}  // namespace ZkMobileBackup
