#include "ZkMobileBackup/domains/ZkMobileBackupReminderDomain.h"

#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupReminderRecord.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupReminderDomain> ZkMobileBackupReminderDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupReminderDomain>(new ZkMobileBackupReminderDomain));
}

std::optional<std::string> ZkMobileBackupReminderDomain::exportName() const {
    return "Reminder";
}

void ZkMobileBackupReminderDomain::_parserDetails() {
    appendRecords<ZkMobileBackupReminderRecord>(*parser()->customTableForReminderDB(), records_);
}

}  // namespace ZkMobileBackup
