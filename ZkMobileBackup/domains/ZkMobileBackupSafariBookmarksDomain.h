#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The bookmarks of the browser.
class ZKMB_API ZkMobileBackupSafariBookmarksDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupSafariBookmarksDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupSafariBookmarksDomain"; }

protected:
    ZkMobileBackupSafariBookmarksDomain() = default;
    void _parserDetails() override;
};

}  // namespace ZkMobileBackup
