#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupPhotoRecord> ZkMobileBackupPhotoRecord::initWithDictionary(std::optional<Dictionary> row,
                                                                                         bool deleted) {
    return makeRecord<ZkMobileBackupPhotoRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupPhotoRecord::recordKeys() {
    static const RecordKeys keys{kPhotoRecordTitle, kPhotoRecordResolution, kPhotoRecordThumbnail};
    return &keys;
}

const RecordKeys* ZkMobileBackupPhotoRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
