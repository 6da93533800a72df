#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The contacts. Their database is parsed; no records are made of it yet.
class ZKMB_API ZkMobileBackupAddressBookDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupAddressBookDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupAddressBookDomain"; }

protected:
    ZkMobileBackupAddressBookDomain() = default;
};

}  // namespace ZkMobileBackup
