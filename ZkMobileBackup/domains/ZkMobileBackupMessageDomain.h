#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The conversations, with the names that the shared contacts domain knows.
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
    void _parserDetails() override;
};

}  // namespace ZkMobileBackup
