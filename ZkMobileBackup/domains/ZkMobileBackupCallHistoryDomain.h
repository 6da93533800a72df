#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The calls, with the names that the shared contacts domain knows.
class ZKMB_API ZkMobileBackupCallHistoryDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupCallHistoryDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupCallHistoryDomain"; }

protected:
    ZkMobileBackupCallHistoryDomain() = default;
    void _parserDetails() override;
};

}  // namespace ZkMobileBackup
