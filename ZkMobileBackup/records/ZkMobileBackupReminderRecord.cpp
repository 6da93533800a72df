#include "ZkMobileBackup/records/ZkMobileBackupReminderRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupReminderRecord> ZkMobileBackupReminderRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupReminderRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupReminderRecord::recordKeys() {
    static const RecordKeys keys{kReminderRecordTitle, kReminderRecordList, kReminderRecordStatus, kReminderRecordDate};
    return &keys;
}

const RecordKeys* ZkMobileBackupReminderRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
