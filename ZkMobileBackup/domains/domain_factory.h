#pragma once

#include <array>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

using DomainMaker = std::shared_ptr<ZkMobileBackupAppDomain> (*)();

/// An application database that a backup may hold, and the domains that its data make, in order.
struct DomainTableRow {
    std::string_view databaseFile;
    std::array<DomainMaker, 2> makers;  ///< the second is null for most
};

/// One row a known database. A new application is one row here beside its domain class.
std::span<const DomainTableRow> domainTable();

/// New domains for the database of this name (its file's name without extension, letter case counts): those of the
/// first row that fits, one plain domain for a name that no row knows.
std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> makeDomains(std::string_view databaseName);

}  // namespace ZkMobileBackup
