#include "ZkMobileBackup/domains/ZkMobileBackupNoteDomain.h"

#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupNoteRecord.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupNoteDomain> ZkMobileBackupNoteDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupNoteDomain>(new ZkMobileBackupNoteDomain));
}

std::optional<std::string> ZkMobileBackupNoteDomain::exportName() const {
    return "Note";
}

void ZkMobileBackupNoteDomain::_parserDetails() {
    appendRecords<ZkMobileBackupNoteRecord>(*parser()->customTableForNotesDB(), records_);
}

}  // namespace ZkMobileBackup
