#include "ZkMobileBackup/domains/ZkMobileBackupCallHistoryDomain.h"

#include "ZkMobileBackup/domains/shared_contacts.h"
#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupCallHistoryRecord.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupCallHistoryDomain> ZkMobileBackupCallHistoryDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupCallHistoryDomain>(new ZkMobileBackupCallHistoryDomain));
}

std::optional<std::string> ZkMobileBackupCallHistoryDomain::exportName() const {
    return "Callhistory";
}

void ZkMobileBackupCallHistoryDomain::_parserDetails() {
    const auto contacts = sharedContacts();
    appendRecords<ZkMobileBackupCallHistoryRecord>(
        *parser()->customTableForCallHistoryDB(contacts ? &*contacts : nullptr), records_);
}

}  // namespace ZkMobileBackup
