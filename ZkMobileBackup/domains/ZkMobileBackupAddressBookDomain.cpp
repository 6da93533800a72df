#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupAddressBookDomain> ZkMobileBackupAddressBookDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupAddressBookDomain>(new ZkMobileBackupAddressBookDomain));
}

std::optional<std::string> ZkMobileBackupAddressBookDomain::exportName() const {
    return "Contacts";
}

}  // namespace ZkMobileBackup
