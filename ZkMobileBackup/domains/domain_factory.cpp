#include "ZkMobileBackup/domains/domain_factory.h"

#include <algorithm>

#include "ZkMobileBackup/backup/ApplicationDatabases.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupCalendarDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupCallHistoryDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMessageDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupNoteDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupReminderDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupSafariBookmarksDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupVoiceMailDomain.h"
#include "base/Text.h"

namespace ZkMobileBackup {

namespace {

template <typename Domain>
std::shared_ptr<ZkMobileBackupAppDomain> make() {
    return Domain::init();
}

constexpr DomainTableRow kDomainTable[] = {
    {kAddressBookDatabase, {make<ZkMobileBackupAddressBookDomain>}},
    {kCalendarDatabase, {make<ZkMobileBackupCalendarDomain>, make<ZkMobileBackupReminderDomain>}},
    {kMessageDatabase, {make<ZkMobileBackupMessageDomain>}},
    {kNoteDatabase, {make<ZkMobileBackupNoteDomain>}},
    {kCallHistoryDatabase, {make<ZkMobileBackupCallHistoryDomain>}},
    {kSafariBookmarksDatabase, {make<ZkMobileBackupSafariBookmarksDomain>}},
    {kVoiceMailDatabase, {make<ZkMobileBackupVoiceMailDomain>}},
    {kPhotoDatabase, {make<ZkMobileBackupPhotoDomain>}},
};

constexpr DomainTableRow kUnknownDatabase{"", {make<ZkMobileBackupAppDomain>}};

const DomainTableRow& rowOf(std::string_view databaseName) {
    const auto* found = std::ranges::find(
        kDomainTable, databaseName, [](const DomainTableRow& row) { return pathWithoutExtension(row.databaseFile); });
    return found != std::end(kDomainTable) ? *found : kUnknownDatabase;
}

}  // namespace

std::span<const DomainTableRow> domainTable() {
    return kDomainTable;
}

std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> makeDomains(std::string_view databaseName) {
    std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> domains;
    for (const DomainMaker maker : rowOf(databaseName).makers) {
        if (maker != nullptr) domains.push_back(maker());
    }
    return domains;
}

}  // namespace ZkMobileBackup
