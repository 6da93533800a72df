#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The calls. Their database is parsed; no records are made of it yet.
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
};

}  // namespace ZkMobileBackup
