#include "export/UnpackTarget.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

constexpr mode_t kFileMode = 0666;  // less what the process masks, as below
constexpr mode_t kFolderMode = 0777;

/// The components of a name with "." and ".." resolved; nothing when it leads out of its folder.
std::optional<std::vector<std::string>> cleanedComponents(std::string_view name) {
    std::vector<std::string> components;
    while (!name.empty()) {
        const std::size_t length = std::min(name.find('/'), name.size());
        const std::string_view component = name.substr(0, length);
        name.remove_prefix(std::min(length + 1, name.size()));
        if (component.empty() || component == ".") continue;
        if (component != "..") {
            components.emplace_back(component);
        } else if (components.empty()) {
            return std::nullopt;
        } else {
            components.pop_back();
        }
    }
    return components;
}

}  // namespace

UnpackTarget::UnpackTarget(const std::string& folder, const std::string& name) : path_(joinedPath(folder, name)) {
    auto components = cleanedComponents(name);
    const bool isFile = !name.ends_with('/');
    isRefused_ = !components || (isFile && components->empty());
    if (isRefused_) return;
    if (isFile) {
        fileName_ = std::move(components->back());
        components->pop_back();
    }
    const std::string root = folder.empty() ? "." : folder;
    createDirectories(root);
    folder_ = FileDescriptor(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    error_ = errno;
    for (const std::string& component : *components) enter(component);
    if (isLink(fileName_)) isRefused_ = true;
}

/// Goes on from folder_ to a folder in it, which is made where it is missing.
void UnpackTarget::enter(const std::string& folder) {
    if (!folder_.isOpen() || isRefused_) return;
    isRefused_ = isLink(folder);
    ::mkdirat(folder_.get(), folder.c_str(), kFolderMode);
    folder_ = FileDescriptor(::openat(folder_.get(), folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    error_ = errno;
}

bool UnpackTarget::isLink(const std::string& name) const {
    struct stat status;
    return ::fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

bool UnpackTarget::exists() const {
    struct stat status;
    return ::fstatat(folder_.get(), fileName_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

FileDescriptor UnpackTarget::open() const {
    if (!folder_.isOpen()) {
        errno = error_;
        return FileDescriptor();
    }
    // Opening must not wait for the reader of a pipe.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    return FileDescriptor(::openat(folder_.get(), fileName_.c_str(), kFlags, kFileMode));
}

}  // namespace ZkMobileBackup
