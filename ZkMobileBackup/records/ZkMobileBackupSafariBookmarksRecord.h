#pragma once

#include <memory>
#include <optional>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

namespace ZkMobileBackup {

/// A bookmark of the browser.
class ZKMB_API ZkMobileBackupSafariBookmarksRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithDictionary:deleted:
    static std::shared_ptr<ZkMobileBackupSafariBookmarksRecord> initWithDictionary(std::optional<Dictionary> row,
                                                                                   bool deleted);
    // recordKeys
    static const RecordKeys* recordKeys();
    const RecordKeys* keysOfClass() const override;

protected:
    using ZkMobileBackupAppDomainRecord::ZkMobileBackupAppDomainRecord;
};

}  // namespace ZkMobileBackup
