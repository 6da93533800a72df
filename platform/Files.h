#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/FileDescriptor.h"

namespace ZkMobileBackup {

// Paths are UTF-8 texts. Nothing here throws; every function may be called from any thread.

/// Whether a folder has an entry of that name, also a link that leads nowhere.
bool entryExists(const std::string& path);
bool isDirectory(const std::string& path);
/// Bytes in a regular file; 0 without one.
std::uint64_t fileSize(const std::string& path);

/// Names in a folder, sorted by their bytes; nothing when it cannot be listed.
std::optional<std::vector<std::string>> directoryEntries(const std::string& folder);

/// A regular file, opened for reading only and without waiting for anybody; not open on failure, with the reason in
/// errno.
FileDescriptor openRegularFile(const std::string& path);
/// The whole of a regular file, opened for reading only; nothing when it cannot be read or is larger than `largest`.
std::optional<std::vector<std::uint8_t>> readFile(const std::string& path,
                                                  std::size_t largest = std::numeric_limits<std::size_t>::max());

/// Creates a folder and those above it. Returns an empty text, or the reason of the failure.
std::string createDirectories(const std::string& path);
/// The same, the folders that are made being closed to all other users.
std::string createPrivateDirectories(const std::string& path);

std::string absolutePath(const std::string& path);
/// HOME, else the home folder of the password entry; nothing without either. Looked up at each call.
std::optional<std::string> homeFolder();

/// The folder for data of the library's own: "ZkMobileBackup" in XDG_DATA_HOME, else in ".local/share" of the home
/// folder; nothing without either. Looked up at each call. It need not exist.
std::optional<std::string> applicationSupportFolder();

/// Removes a file, or a folder with all it holds, following no link. What is not there is no failure. Returns an empty
/// text, or the reason why something stays.
std::string removeTree(const std::string& path);

/// A path at which no entry stands yet: `path` itself, else "(0)", "(1)", ... put before its extension. Earlier
/// occurrences of the same number text within the name, not the folders, are removed first; numbering starts at 0.
std::string freeOutputPath(const std::string& path);

/// Gives the files of one job such paths. It remembers how far the numbers of each path have come, so that the next of
/// thousands of files of one name does not ask for all earlier ones again. Belongs to one thread at a time.
class OutputPaths {
public:
    /// The same as freeOutputPath, unless files that it has given numbers were removed meanwhile.
    std::string next(const std::string& path);

private:
    std::unordered_map<std::string, std::size_t> numbers_;  // the last one given, by the path asked for
};

/// What an errno value says, in words.
std::string textOfError(int error);
// The sentences about a file that could not be read, written or copied, from a value of errno. Which file is to blame
// for a copy is not known.
std::string readFailure(const std::string& path, int error);
std::string writeFailure(const std::string& path, int error);
std::string copyFailure(const std::string& source, const std::string& target, int error);
/// The sentence about a file that has fewer bytes than it had when its copy began.
std::string shortenedFailure(const std::string& source);

/// What became of a file that was to be written.
struct WrittenFile {
    std::string path;     ///< where it stands; empty on failure
    std::string failure;  ///< reason, naming the file; empty on success
};

/// Writes a file that never replaces another: the bytes go to a temporary file in the same folder, are flushed, and are
/// moved to the first free name after `path` (see freeOutputPath), also when others claim names meanwhile. On failure
/// nothing stays behind.
WrittenFile writeNewFile(const std::string& path, std::string_view bytes);
WrittenFile writeNewFile(const std::string& path, std::string_view bytes, OutputPaths& paths);

/// Writes a copy of a regular file in the same way. One that becomes shorter meanwhile is a failure.
WrittenFile copyToNewFile(const std::string& source, const std::string& path, OutputPaths& paths);

/// Writes a file that replaces another of its name: readers find the old one or the whole new one. On failure nothing
/// stays behind. Returns an empty text, or the reason of the failure.
std::string replaceFile(const std::string& path, std::string_view bytes);

/// A new, empty folder in the folder of `path`, for what is to be moved to `path` once it is complete. An empty text on
/// failure, with the reason in errno.
std::string makeFolderBeside(const std::string& path);
/// Flushes the file and moves it to the first free name after `path`, as writeNewFile does; both are in one file
/// system. On failure it is removed.
WrittenFile moveToFreeName(const std::string& temporaryPath, const std::string& path);

/// A path in the folder of `path` at which no entry stands, for a file that is soon moved or removed.
std::string temporaryPathBeside(const std::string& path);

}  // namespace ZkMobileBackup
