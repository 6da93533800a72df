#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZkMobileBackup {

// Paths are UTF-8 texts. Nothing here throws; every function may be called from any thread.

/// Whether a folder has an entry of that name, also a link that leads nowhere.
bool entryExists(const std::string& path);
bool isDirectory(const std::string& path);

/// Names in a folder, sorted by their bytes; nothing when it cannot be listed.
std::optional<std::vector<std::string>> directoryEntries(const std::string& folder);

/// The whole of a regular file, opened for reading only; nothing when it cannot be read or is larger than `largest`.
std::optional<std::vector<std::uint8_t>> readFile(const std::string& path,
                                                  std::size_t largest = std::numeric_limits<std::size_t>::max());

/// Creates a folder and those above it. Returns an empty text, or the reason of the failure.
std::string createDirectories(const std::string& path);

std::string absolutePath(const std::string& path);
/// HOME, else the home folder of the password entry; nothing without either. Looked up at each call.
std::optional<std::string> homeFolder();

/// A path at which no entry stands yet: `path` itself, else "(0)", "(1)", ... put before its extension. Earlier
/// occurrences of the same number text within the name, not the folders, are removed first; numbering starts at 0.
std::string freeOutputPath(const std::string& path);

/// What became of a file that was to be written.
struct WrittenFile {
    std::string path;     ///< where it stands; empty on failure
    std::string failure;  ///< reason, naming the file; empty on success
};

/// Writes a file that never replaces another: the bytes go to a temporary file in the same folder, are flushed, and are
/// moved to the first free name after `path` (see freeOutputPath), also when others claim names meanwhile. On failure
/// nothing stays behind.
WrittenFile writeNewFile(const std::string& path, std::string_view bytes);

}  // namespace ZkMobileBackup
