#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The events of the calendar.
class ZKMB_API ZkMobileBackupCalendarDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupCalendarDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupCalendarDomain"; }

protected:
    ZkMobileBackupCalendarDomain() = default;
    void _parserDetails() override;
};

}  // namespace ZkMobileBackup
