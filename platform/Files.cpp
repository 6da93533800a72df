#include "platform/Files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <pwd.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/Text.h"
#include "platform/FileReplacement.h"

namespace ZkMobileBackup {

namespace {

namespace fs = std::filesystem;

/// Bytes that `::read` puts at `target`; 0 at the end of the file, negative on failure.
ssize_t readSome(int descriptor, std::uint8_t* target, std::size_t count) {
    ssize_t got = -1;
    do {
        got = ::read(descriptor, target, count);
    } while (got < 0 && errno == EINTR);
    return got;
}

/// Reads to the end of the file, piece by piece: memory is touched only for bytes that are there.
bool readToEnd(int descriptor, std::size_t expected, std::size_t largest, std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t kPiece = std::size_t{256} << 10;
    bytes.reserve(expected + 1);
    for (;;) {
        const std::size_t start = bytes.size();
        // One byte more than expected tells the end of the file without another piece.
        bytes.resize(start + (start <= expected ? std::min(expected - start + 1, kPiece) : kPiece));
        const ssize_t got = readSome(descriptor, bytes.data() + start, bytes.size() - start);
        bytes.resize(start + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0 || bytes.size() > largest) return false;
        if (got == 0) return true;
    }
}

bool readWholeFile(int descriptor, std::size_t largest, std::vector<std::uint8_t>& bytes) {
    struct stat status;
    if (::fstat(descriptor, &status) != 0) return false;
    const auto size = static_cast<std::size_t>(status.st_size);
    return size <= largest && readToEnd(descriptor, size, largest, bytes);
}

std::string withoutEvery(std::string text, std::string_view part) {
    std::size_t found = 0;
    while ((found = text.find(part, found)) != std::string::npos) text.erase(found, part.size());
    return text;
}

/// A file under a name of its own in the folder of its later path; removed with the object unless it was moved.
class TemporaryFile {
public:
    /// A file that stands at `path`.
    explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
    ~TemporaryFile() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Makes the file, with what `fill` writes to it; false on failure. `fill` returns false with the reason in errno.
    template <typename Fill>
    bool create(Fill&& fill) {
        FileDescriptor file(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadableByAll));
        if (!file.isOpen()) {
            error_ = errno;
            path_.clear();  // whoever owns what stands there
            return false;
        }
        return succeeded(fill(file)) && flushAndClose(file);
    }

    /// Waits until the file's content is stored; false on failure.
    bool flush() {
        FileDescriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC));
        return succeeded(file.isOpen()) && flushAndClose(file);
    }

    /// Gives the file its name; false on failure, with EEXIST when the name is taken.
    bool moveTo(const std::string& path) {
        const bool moved = moveWithoutReplacing(path);
        if (moved) path_.clear();
        return succeeded(moved);
    }

    int error() const { return error_; }

private:
    bool succeeded(bool done) {
        if (!done) error_ = errno;
        return done;
    }
    bool flushAndClose(FileDescriptor& file) { return succeeded(::fsync(file.get()) == 0) && succeeded(file.close()); }

    bool moveWithoutReplacing(const std::string& path) const {
        if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) return true;
        if (errno != EINVAL && errno != ENOSYS) return false;
        // This file system has no such rename; a second link to the file replaces nothing either.
        return ::link(path_.c_str(), path.c_str()) == 0 && ::unlink(path_.c_str()) == 0;
    }

    std::string path_;  // empty without a file
    int error_ = 0;
};

std::string folderOf(const std::string& path) {
    const std::string_view folder = pathWithoutLastComponent(path);
    return std::string(folder.empty() ? "." : folder);
}

std::string folderFailure(const std::string& path, const std::string& reason) {
    return fmt::format("Cannot create the folder '{}': {}.", path, reason);
}

WrittenFile notWritten(const std::string& path, int error) {
    return {{}, writeFailure(path, error)};
}

WrittenFile claimFreeName(TemporaryFile& file, const std::string& path, OutputPaths& paths) {
    for (;;) {
        std::string freePath = paths.next(path);
        if (file.moveTo(freePath)) return {std::move(freePath), {}};
        if (file.error() != EEXIST) return notWritten(path, file.error());
    }
}

/// A path with a number put before its extension; the same number text earlier in the name gives way.
std::string numberedPath(const std::string& path, std::size_t number) {
    const std::string name(lastPathComponent(path));
    const std::string stem(pathWithoutExtension(name));
    const std::string mark = fmt::format("({})", number);
    const std::string numbered = fmt::format("{}{}{}", withoutEvery(stem, mark), mark, name.substr(stem.size()));
    return joinedPath(pathWithoutLastComponent(path), numbered);
}

}  // namespace

bool entryExists(const std::string& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

bool isDirectory(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

std::uint64_t fileSize(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    return error ? 0 : size;
}

std::optional<std::vector<std::string>> directoryEntries(const std::string& folder) {
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        names.push_back(entry->path().filename().string());
    }
    if (error) return std::nullopt;
    std::ranges::sort(names);
    return names;
}

FileDescriptor openRegularFile(const std::string& path) {
    // Opening must neither wait for the writer of a pipe nor take over a terminal.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return FileDescriptor();
    if (S_ISREG(status.st_mode)) return file;
    file.close();
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return file;
}

std::optional<std::vector<std::uint8_t>> readFile(const std::string& path, std::size_t largest) {
    const FileDescriptor file = openRegularFile(path);
    if (!file.isOpen()) return std::nullopt;
    std::vector<std::uint8_t> bytes;
    try {
        if (!readWholeFile(file.get(), largest, bytes)) return std::nullopt;
    } catch (const std::exception&) {  // more than memory holds
        return std::nullopt;
    }
    return bytes;
}

std::string createDirectories(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!error && !fs::is_directory(path, error)) error = std::make_error_code(std::errc::not_a_directory);
    return error ? folderFailure(path, error.message()) : "";
}

std::string createPrivateDirectories(const std::string& path) {
    const std::string above(pathWithoutLastComponent(path));
    if (!above.empty() && !isDirectory(above)) {
        std::string failure = createPrivateDirectories(above);
        if (!failure.empty()) return failure;
    }
    if (::mkdir(path.c_str(), S_IRWXU) == 0) return "";
    const int error = errno;
    return isDirectory(path) ? "" : folderFailure(path, textOfError(error));
}

std::string absolutePath(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    return error ? path : absolute.string();
}

std::optional<std::string> homeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') return home;
    std::vector<char> buffer(std::size_t{16} << 10);
    passwd entry;
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return {};
    return found->pw_dir;
}

std::optional<std::string> applicationSupportFolder() {
    constexpr const char* kOwnFolder = "ZkMobileBackup";
    // A relative path is to be ignored: it would name another folder in every working directory.
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    if (dataHome != nullptr && *dataHome == '/') return joinedPath(dataHome, kOwnFolder);
    const std::optional<std::string> home = homeFolder();
    if (!home) return std::nullopt;
    return joinedPath(joinedPath(*home, ".local/share"), kOwnFolder);
}

std::string removeTree(const std::string& path) {
    std::error_code error;
    fs::remove_all(path, error);
    return error ? fmt::format("Cannot remove '{}': {}.", path, error.message()) : "";
}

std::string freeOutputPath(const std::string& path) {
    return OutputPaths().next(path);
}

std::string OutputPaths::next(const std::string& path) {
    if (!entryExists(path)) return path;
    std::size_t& number = numbers_[path];
    for (;; ++number) {
        std::string candidate = numberedPath(path, number);
        if (!entryExists(candidate)) return candidate;
    }
}

std::string textOfError(int error) {
    return std::generic_category().message(error);
}

std::string readFailure(const std::string& path, int error) {
    return fmt::format("Cannot read '{}': {}.", path, textOfError(error));
}

std::string writeFailure(const std::string& path, int error) {
    return fmt::format("Cannot write '{}': {}.", path, textOfError(error));
}

std::string copyFailure(const std::string& source, const std::string& target, int error) {
    return fmt::format("Cannot copy '{}' to '{}': {}.", source, target, textOfError(error));
}

std::string shortenedFailure(const std::string& source) {
    return fmt::format("'{}' became shorter while it was copied.", source);
}

std::string temporaryPathBeside(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    std::string candidate;
    do {
        candidate = joinedPath(folderOf(path), fmt::format(".zkmb-{}-{}", ::getpid(), counter++));
    } while (entryExists(candidate));
    return candidate;
}

std::string makeFolderBeside(const std::string& path) {
    std::string folder = temporaryPathBeside(path);
    if (::mkdir(folder.c_str(), S_IRWXU) != 0) folder.clear();
    return folder;
}

WrittenFile writeNewFile(const std::string& path, std::string_view bytes) {
    OutputPaths paths;
    return writeNewFile(path, bytes, paths);
}

WrittenFile writeNewFile(const std::string& path, std::string_view bytes, OutputPaths& paths) {
    TemporaryFile file(temporaryPathBeside(path));
    const auto fill = [bytes](FileDescriptor& target) { return target.write(bytes); };
    return file.create(fill) ? claimFreeName(file, path, paths) : notWritten(path, file.error());
}

WrittenFile copyToNewFile(const std::string& source, const std::string& path, OutputPaths& paths) {
    const FileDescriptor content = openRegularFile(source);
    if (!content.isOpen()) return {{}, readFailure(source, errno)};
    TemporaryFile file(temporaryPathBeside(path));
    std::uint64_t copied = 0;
    const std::uint64_t size = content.size();
    const auto fill = [&](FileDescriptor& target) { return target.writeContentOf(content, copied); };
    if (!file.create(fill)) return {{}, copyFailure(source, path, file.error())};
    if (copied < size) return {{}, shortenedFailure(source)};
    return claimFreeName(file, path, paths);
}

WrittenFile moveToFreeName(const std::string& temporaryPath, const std::string& path) {
    TemporaryFile file(temporaryPath);
    if (!file.flush()) return notWritten(path, file.error());
    OutputPaths paths;
    return claimFreeName(file, path, paths);
}

std::string replaceFile(const std::string& path, std::string_view bytes) {
    FileReplacement file(path);
    file.append(bytes);
    return file.finish();
}

}  // namespace ZkMobileBackup
