#include "ZkMobileBackup/records/ZkMobileBackupSafariBookmarksRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupSafariBookmarksRecord> ZkMobileBackupSafariBookmarksRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupSafariBookmarksRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupSafariBookmarksRecord::recordKeys() {
    static const RecordKeys keys{kSafariBookmarksRecordTitle, kSafariBookmarksRecordURL};
    return &keys;
}

const RecordKeys* ZkMobileBackupSafariBookmarksRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
