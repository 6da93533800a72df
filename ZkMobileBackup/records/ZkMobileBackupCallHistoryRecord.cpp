#include "ZkMobileBackup/records/ZkMobileBackupCallHistoryRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupCallHistoryRecord> ZkMobileBackupCallHistoryRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupCallHistoryRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupCallHistoryRecord::recordKeys() {
    static const RecordKeys keys{kCallHistoryRecordName, kCallHistoryRecordPhone, kCallHistoryRecordDate,
                                 kCallHistoryRecordType, kCallHistoryRecordDuration};
    return &keys;
}

const RecordKeys* ZkMobileBackupCallHistoryRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
