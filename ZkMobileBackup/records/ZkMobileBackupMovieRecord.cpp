#include "ZkMobileBackup/records/ZkMobileBackupMovieRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupMovieRecord> ZkMobileBackupMovieRecord::initWithDictionary(std::optional<Dictionary> row,
                                                                                         bool deleted) {
    return makeRecord<ZkMobileBackupMovieRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupMovieRecord::recordKeys() {
    static const RecordKeys keys{kMovieRecordTitle, kMovieRecordDuration, kMovieRecordResolution, kMovieRecordSize};
    return &keys;
}

const RecordKeys* ZkMobileBackupMovieRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
