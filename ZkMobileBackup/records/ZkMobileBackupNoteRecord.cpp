#include "ZkMobileBackup/records/ZkMobileBackupNoteRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupNoteRecord> ZkMobileBackupNoteRecord::initWithDictionary(std::optional<Dictionary> row,
                                                                                       bool deleted) {
    return makeRecord<ZkMobileBackupNoteRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupNoteRecord::recordKeys() {
    static const RecordKeys keys{kNoteRecordTitle, kNoteRecordDate, kNoteRecordText};
    return &keys;
}

const RecordKeys* ZkMobileBackupNoteRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
