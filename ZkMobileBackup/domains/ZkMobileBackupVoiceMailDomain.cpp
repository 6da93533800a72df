#include "ZkMobileBackup/domains/ZkMobileBackupVoiceMailDomain.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupVoiceMailDomain> ZkMobileBackupVoiceMailDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupVoiceMailDomain>(new ZkMobileBackupVoiceMailDomain));
}

std::optional<std::string> ZkMobileBackupVoiceMailDomain::exportName() const {
    return "Voicemail";
}

}  // namespace ZkMobileBackup
