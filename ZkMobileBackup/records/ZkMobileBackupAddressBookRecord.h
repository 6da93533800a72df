#pragma once

#include <memory>
#include <optional>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

namespace ZkMobileBackup {

/// A contact.
class ZKMB_API ZkMobileBackupAddressBookRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithDictionary:deleted:
    /// Writes the row's "image" value to the log unless it is the text "NULL".
    static std::shared_ptr<ZkMobileBackupAddressBookRecord> initWithDictionary(std::optional<Dictionary> row,
                                                                               bool deleted);
    // recordKeys
    static const RecordKeys* recordKeys();
    const RecordKeys* keysOfClass() const override;

    // exportValue
    /// The keys of recordKeys, each with the stored value, or with the empty text where there is none. A name or
    /// company "NULL" reads empty. No text is cut or cleaned.
    std::optional<Dictionary> exportValue() const override;

protected:
    ZkMobileBackupAddressBookRecord(std::optional<Dictionary> row, bool deleted);
};

}  // namespace ZkMobileBackup
