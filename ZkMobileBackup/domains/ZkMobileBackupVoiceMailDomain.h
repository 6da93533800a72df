#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The voicemail. Its database is parsed, but no records are made of it.
class ZKMB_API ZkMobileBackupVoiceMailDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupVoiceMailDomain> init();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupVoiceMailDomain"; }

protected:
    ZkMobileBackupVoiceMailDomain() = default;
};

}  // namespace ZkMobileBackup
