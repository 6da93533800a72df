#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The notes.
class ZKMB_API ZkMobileBackupNoteDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupNoteDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupNoteDomain"; }

protected:
    ZkMobileBackupNoteDomain() = default;
    void _parserDetails() override;
};

}  // namespace ZkMobileBackup
