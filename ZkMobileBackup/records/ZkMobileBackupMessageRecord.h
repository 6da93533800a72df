#pragma once

#include <memory>
#include <optional>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

namespace ZkMobileBackup {

/// A conversation.
class ZKMB_API ZkMobileBackupMessageRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithDictionary:deleted:
    static std::shared_ptr<ZkMobileBackupMessageRecord> initWithDictionary(std::optional<Dictionary> row, bool deleted);
    // recordKeys
    static const RecordKeys* recordKeys();
    const RecordKeys* keysOfClass() const override;

    // exportValue
    /// The row without its identity, and with its items as texts: "Send:" or "Received:", date, blank, text. Nothing
    /// for a row without items.
    std::optional<Dictionary> exportValue() const override;

protected:
    using ZkMobileBackupAppDomainRecord::ZkMobileBackupAppDomainRecord;
};

}  // namespace ZkMobileBackup
