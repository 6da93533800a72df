#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

class ZkDeviceBackupSnapshot;

/// The records of a manifest by their start offset in the file, in which order they are enumerated.
///
/// A record has these keys, in this order. Texts: "domain", "filename", "linktarget", "datahash", "unknown1". Whole
/// numbers: "start_offset" (before all others), "mode", "unknown2", "unknown3", "userid", "groupid", "mtime", "atime",
/// "ctime" (seconds since 1970), "filelen", "flag", "numprops"; the four-byte ones and "filelen" are signed 32-bit, so
/// a length of 2 GiB and more is wrapped. A dictionary from text to text: "properties". At last "fileID", a text: the
/// name of the file in the backup folder. See docs/manifest.md.
using Manifest = std::map<std::int64_t, Dictionary>;

/// Names of files in a backup folder, 40 lower-case hexadecimal digits, by the start offset of their record.
using ManifestIndex = std::unordered_map<std::int64_t, std::string>;

/// The "fileID" of a record that the index does not know.
inline constexpr std::string_view kNoFileID = "<nofileID>";

/// Reads what a backup says about its files. All functions here only read, any thread may call them.
class ZKMB_API ZkMbdbFileParser {
public:
    ZkMbdbFileParser() = delete;

    // fileListFromMbdb:
    /// The manifest in the snapshot's folder. "fileID" is the name that the index "Manifest.mbdx" gives, kNoFileID
    /// where it gives none; without an index it is the upper-case hash of domain, "-" and path. Nothing when the
    /// manifest, or an index that is there, cannot be read; an empty manifest when it does not begin like one.
    static std::optional<Manifest> fileListFromMbdb(const ZkDeviceBackupSnapshot& snapshot);
};

// parserMbdb ("parse the mbdb file")
/// Reads a "Manifest.mbdb". Records have no "fileID" when a "Manifest.mbdx" stands beside it. Nothing, and a line in
/// the log, when the file cannot be read; an empty manifest, and a text on standard error, when it does not begin like
/// one. A record that the end of the file cuts is kept, with 0 for missing bytes.
ZKMB_API std::optional<Manifest> parserMbdb(const std::string& path);

// parserMbdx ("parse the mbdx file")
/// Reads a "Manifest.mbdx"; fails like parserMbdb. A later entry for one record replaces an earlier one.
ZKMB_API std::optional<ManifestIndex> parserMbdx(const std::string& path);

}  // namespace ZkMobileBackup
