#include "ZkMobileBackup/domains/ZkMobileBackupMessageDomain.h"

#include "ZkMobileBackup/domains/shared_contacts.h"
#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupMessageRecord.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupMessageDomain> ZkMobileBackupMessageDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupMessageDomain>(new ZkMobileBackupMessageDomain));
}

std::optional<std::string> ZkMobileBackupMessageDomain::exportName() const {
    return "Message";
}

void ZkMobileBackupMessageDomain::_parserDetails() {
    const auto contacts = sharedContacts();
    appendRecords<ZkMobileBackupMessageRecord>(*parser()->customTableForSMSDB(contacts ? &*contacts : nullptr),
                                               records_);
}

}  // namespace ZkMobileBackup
