#include "ZkMobileBackup/domains/ZkMobileBackupSafariBookmarksDomain.h"

#include "ZkMobileBackup/domains/table_records.h"
#include "ZkMobileBackup/records/ZkMobileBackupSafariBookmarksRecord.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupSafariBookmarksDomain> ZkMobileBackupSafariBookmarksDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupSafariBookmarksDomain>(new ZkMobileBackupSafariBookmarksDomain));
}

std::optional<std::string> ZkMobileBackupSafariBookmarksDomain::exportName() const {
    return "SafariBookmarks";
}

void ZkMobileBackupSafariBookmarksDomain::_parserDetails() {
    appendRecords<ZkMobileBackupSafariBookmarksRecord>(*parser()->customTableForBookmarksDB(), records_);
}

}  // namespace ZkMobileBackup
