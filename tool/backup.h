#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ZkMobileBackup/backup/ZkiTunesBackupSnapshot.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"
#include "ZkMobileBackup/scan/ZkMobileBackupParser.h"

namespace zkmb {

struct Context;

using Domain = std::shared_ptr<ZkMobileBackup::ZkMobileBackupAppDomain>;
using Domains = std::vector<Domain>;

/// What a scan reports: a state, the domain that was added or null, and the fraction done.
using ScanListener = std::function<void(std::int64_t state, const Domain& domain, double progress)>;

/// The states that scans and parses report last.
inline constexpr std::int64_t kFinished = 3;

/// The name that stands for the movie domain, which has none of its own.
inline constexpr const char* kMovieName = "Movie";

/// Describes the backup in a folder. Throws Failure when the folder cannot be read, and warns when its manifest does
/// not begin like one.
std::shared_ptr<ZkMobileBackup::ZkiTunesBackupSnapshot> openBackup(const std::string& folder);

/// Throws a Failure when the manifest of a backup, or the index beside it, cannot be read.
void requireManifest(const std::string& folder);

/// Finds the domains of a backup, none without a readable manifest. The listener hears every report of the scan.
std::shared_ptr<ZkMobileBackup::ZkMobileBackupParser> scanBackup(const std::string& folder, Context& context,
                                                                 const ScanListener& listener = {});

/// Reads the records of a domain, to the end or until Ctrl-C.
void parseDomain(ZkMobileBackup::ZkMobileBackupAppDomain& domain, Context& context);

/// The name by which the command line knows a domain.
std::string nameOf(const ZkMobileBackup::ZkMobileBackupAppDomain& domain);

/// The domains with one of these names, in the order of the scan; all of them for no name. Throws Failure for a name
/// that no domain has.
Domains domainsNamed(const Domains& domains, const std::vector<std::string>& names);

/// Number of records that are marked as deleted.
std::size_t deletedCount(const ZkMobileBackup::ZkMobileBackupAppDomain& domain);

}  // namespace zkmb
