#pragma once

#include <memory>
#include <optional>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

namespace ZkMobileBackup {

/// An event of the calendar.
class ZKMB_API ZkMobileBackupCalendarRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithDictionary:deleted:
    static std::shared_ptr<ZkMobileBackupCalendarRecord> initWithDictionary(std::optional<Dictionary> row,
                                                                            bool deleted);
    // recordKeys
    static const RecordKeys* recordKeys();
    const RecordKeys* keysOfClass() const override;

protected:
    using ZkMobileBackupAppDomainRecord::ZkMobileBackupAppDomainRecord;
};

}  // namespace ZkMobileBackup
