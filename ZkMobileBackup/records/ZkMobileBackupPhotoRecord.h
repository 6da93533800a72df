#pragma once

#include <memory>
#include <optional>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

namespace ZkMobileBackup {

/// A picture. Its value has the key kPhotoRecordCreateDate besides those of recordKeys.
class ZKMB_API ZkMobileBackupPhotoRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithDictionary:deleted:
    static std::shared_ptr<ZkMobileBackupPhotoRecord> initWithDictionary(std::optional<Dictionary> row, bool deleted);
    // recordKeys
    static const RecordKeys* recordKeys();
    const RecordKeys* keysOfClass() const override;

protected:
    using ZkMobileBackupAppDomainRecord::ZkMobileBackupAppDomainRecord;
};

}  // namespace ZkMobileBackup
