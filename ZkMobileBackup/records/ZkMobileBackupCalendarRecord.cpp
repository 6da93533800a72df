#include "ZkMobileBackup/records/ZkMobileBackupCalendarRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupCalendarRecord> ZkMobileBackupCalendarRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupCalendarRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupCalendarRecord::recordKeys() {
    static const RecordKeys keys{kCalendarRecordTitle, kCalendarRecordStartData, kCalendarRecordEndData,
                                 kCalendarRecordLocation};
    return &keys;
}

const RecordKeys* ZkMobileBackupCalendarRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
