#pragma once

#include <string>

namespace ZkMobileBackup {

/// Whether a backup has an index of its files' names.
enum class BackupIndex {
    None,    ///< names are hashes, which the manifest leaves to be computed; stored in lower case
    Present  ///< names stand in "Manifest.mbdx"; they say nothing about the path
};

/// Writes a whole backup into `folder`, which is made if need be: every sample database, pictures, movies, stores of
/// thumbnails, a property list, and a manifest that names them. The same bytes at every call.
/// Throws std::runtime_error when something cannot be written.
void writeSampleBackup(const std::string& folder, BackupIndex index = BackupIndex::None);

}  // namespace ZkMobileBackup
