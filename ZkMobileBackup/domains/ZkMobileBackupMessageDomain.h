#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The messages. Their database is parsed; no records are made of it yet.
class ZKMB_API ZkMobileBackupMessageDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupMessageDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupMessageDomain"; }

protected:
    ZkMobileBackupMessageDomain() = default;
};

}  // namespace ZkMobileBackup
