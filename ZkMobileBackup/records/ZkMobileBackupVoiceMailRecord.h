#pragma once

#include <memory>
#include <optional>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

namespace ZkMobileBackup {

/// A voice message. None is made so far, and the class has no keys.
class ZKMB_API ZkMobileBackupVoiceMailRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithDictionary:deleted:
    static std::shared_ptr<ZkMobileBackupVoiceMailRecord> initWithDictionary(std::optional<Dictionary> row,
                                                                             bool deleted);

protected:
    using ZkMobileBackupAppDomainRecord::ZkMobileBackupAppDomainRecord;
};

}  // namespace ZkMobileBackup
