#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"

#include <utility>

#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupAddressBookRecord.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupAddressBookDomain> ZkMobileBackupAddressBookDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupAddressBookDomain>(new ZkMobileBackupAddressBookDomain));
}

std::optional<std::string> ZkMobileBackupAddressBookDomain::exportName() const {
    return "Contacts";
}

std::optional<Dictionary> ZkMobileBackupAddressBookDomain::contactsInfo() {
    const std::lock_guard lock(contactsMutex_);
    if (!contactsInfo_) contactsInfo_ = newContactsMap();
    return contactsInfo_;
}

std::optional<Dictionary> ZkMobileBackupAddressBookDomain::newContactsMap() const {
    const auto engine = DlxSQLiteParser::initWithDBData(databaseBytes());
    if (!engine->parser()) return std::nullopt;
    std::optional<Dictionary> contactsMap;
    engine->customTableForAddressBookDB(&contactsMap);
    return contactsMap;
}

void ZkMobileBackupAddressBookDomain::_parserDetails() {
    std::optional<Dictionary> contactsMap;
    const auto table = parser()->customTableForAddressBookDB(&contactsMap);
    {
        const std::lock_guard lock(contactsMutex_);
        if (!contactsInfo_) contactsInfo_ = std::move(contactsMap);
    }
    appendRecords<ZkMobileBackupAddressBookRecord>(*table, records_);
}

}  // namespace ZkMobileBackup
