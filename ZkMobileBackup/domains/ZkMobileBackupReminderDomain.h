#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The reminders, which the calendar database holds too.
class ZKMB_API ZkMobileBackupReminderDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupReminderDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupReminderDomain"; }

protected:
    ZkMobileBackupReminderDomain() = default;
    void _parserDetails() override;
};

}  // namespace ZkMobileBackup
