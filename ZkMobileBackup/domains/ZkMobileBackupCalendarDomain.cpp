#include "ZkMobileBackup/domains/ZkMobileBackupCalendarDomain.h"

#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupCalendarRecord.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupCalendarDomain> ZkMobileBackupCalendarDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupCalendarDomain>(new ZkMobileBackupCalendarDomain));
}

std::optional<std::string> ZkMobileBackupCalendarDomain::exportName() const {
    return "Calendar";
}

void ZkMobileBackupCalendarDomain::_parserDetails() {
    appendRecords<ZkMobileBackupCalendarRecord>(*parser()->customTableForCalendarDB(), records_);
}

}  // namespace ZkMobileBackup
