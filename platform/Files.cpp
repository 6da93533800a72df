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

namespace ZkMobileBackup {

namespace {

namespace fs = std::filesystem;

std::string textOfError(int error) {
    return std::generic_category().message(error);
}

/// An open file, closed with the object.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    /// False when bytes written before could not be stored after all.
    bool close() { return descriptor_ < 0 || ::close(std::exchange(descriptor_, -1)) == 0; }

private:
    int descriptor_;
};

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

bool readRegularFile(int descriptor, std::size_t largest, std::vector<std::uint8_t>& bytes) {
    struct stat status;
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return false;
    const auto size = static_cast<std::size_t>(status.st_size);
    return size <= largest && readToEnd(descriptor, size, largest, bytes);
}

std::string withoutEvery(std::string text, std::string_view part) {
    std::size_t found = 0;
    while ((found = text.find(part, found)) != std::string::npos) text.erase(found, part.size());
    return text;
}

/// A file that is being written under a name of its own in the folder of its later path; removed with the object unless
/// it was moved.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string folder) : folder_(std::move(folder)), file_(create()) {
        if (!file_.isOpen()) error_ = errno;
    }
    ~TemporaryFile() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Writes and flushes; false on failure.
    bool write(std::string_view bytes) {
        while (error_ == 0 && !bytes.empty()) bytes.remove_prefix(writeSome(bytes));
        if (error_ == 0 && ::fsync(file_.get()) != 0) error_ = errno;
        if (!file_.close() && error_ == 0) error_ = errno;
        return error_ == 0;
    }

    /// Gives the file its name; false on failure, with EEXIST when the name is taken.
    bool moveTo(const std::string& path) {
        error_ = moveWithoutReplacing(path) ? 0 : errno;
        if (error_ == 0) path_.clear();
        return error_ == 0;
    }

    int error() const { return error_; }

private:
    int create() {
        static std::atomic<unsigned> counter{0};
        int descriptor = -1;
        do {
            path_ = joinedPath(folder_, fmt::format(".zkmb-{}-{}", ::getpid(), counter++));
            descriptor = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadableByAll);
        } while (descriptor < 0 && errno == EEXIST);
        if (descriptor < 0) path_.clear();
        return descriptor;
    }

    std::size_t writeSome(std::string_view bytes) {
        const ssize_t written = ::write(file_.get(), bytes.data(), bytes.size());
        if (written >= 0) return static_cast<std::size_t>(written);
        if (errno != EINTR) error_ = errno;
        return 0;
    }

    bool moveWithoutReplacing(const std::string& path) const {
        if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) return true;
        if (errno != EINVAL && errno != ENOSYS) return false;
        // This file system has no such rename; a second link to the file replaces nothing either.
        return ::link(path_.c_str(), path.c_str()) == 0 && ::unlink(path_.c_str()) == 0;
    }

    static constexpr mode_t kReadableByAll = 0666;  // less what the process masks

    std::string folder_;
    std::string path_;  // empty without a file
    int error_ = 0;
    FileDescriptor file_;
};

std::string folderOf(const std::string& path) {
    const std::string_view folder = pathWithoutLastComponent(path);
    return std::string(folder.empty() ? "." : folder);
}

WrittenFile notWritten(const std::string& path, int error) {
    return {{}, fmt::format("Cannot write '{}': {}.", path, textOfError(error))};
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

std::optional<std::vector<std::uint8_t>> readFile(const std::string& path, std::size_t largest) {
    // Opening must neither wait for the writer of a pipe nor take over a terminal.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen()) return std::nullopt;
    std::vector<std::uint8_t> bytes;
    try {
        if (!readRegularFile(file.get(), largest, bytes)) return std::nullopt;
    } catch (const std::exception&) {  // more than memory holds
        return std::nullopt;
    }
    return bytes;
}

std::string createDirectories(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!error && !fs::is_directory(path, error)) error = std::make_error_code(std::errc::not_a_directory);
    return error ? fmt::format("Cannot create the folder '{}': {}.", path, error.message()) : "";
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

std::string freeOutputPath(const std::string& path) {
    if (!entryExists(path)) return path;
    const std::string name(lastPathComponent(path));
    const std::string stem(pathWithoutExtension(name));
    const std::string extension = name.substr(stem.size());
    for (std::size_t number = 0;; ++number) {
        const std::string mark = fmt::format("({})", number);
        const std::string candidate = fmt::format("{}{}{}", withoutEvery(stem, mark), mark, extension);
        std::string candidatePath = joinedPath(pathWithoutLastComponent(path), candidate);
        if (!entryExists(candidatePath)) return candidatePath;
    }
}

WrittenFile writeNewFile(const std::string& path, std::string_view bytes) {
    TemporaryFile file(folderOf(path));
    if (!file.write(bytes)) return notWritten(path, file.error());
    for (;;) {
        std::string freePath = freeOutputPath(path);
        if (file.moveTo(freePath)) return {std::move(freePath), {}};
        if (file.error() != EEXIST) return notWritten(path, file.error());
    }
}

}  // namespace ZkMobileBackup
