#pragma once

#include <cstdint>
#include <minizip/zip.h>
#include <span>
#include <string>

namespace ZkMobileBackup {

/// What an entry of an archive is made of.
struct NewZipEntry {
    std::string name;  ///< UTF-8, not marked as such
    zip_fileinfo info{};
    std::span<const std::uint8_t> bytes;
};

/// Adds a deflated entry to an archive that is being written, encrypted when there is a password. Returns false on
/// failure.
bool writeZipEntry(zipFile archive, const NewZipEntry& entry, const std::string& password);

}  // namespace ZkMobileBackup
