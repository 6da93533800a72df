#include "ZkMobileBackup/records/ZkMobileBackupVoiceMailRecord.h"

#include "ZkMobileBackup/records/make_record.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupVoiceMailRecord> ZkMobileBackupVoiceMailRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupVoiceMailRecord>(std::move(row), deleted);
}

}  // namespace ZkMobileBackup
