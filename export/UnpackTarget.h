#pragma once

#include <string>
#include <string_view>

#include "platform/FileDescriptor.h"

namespace ZkMobileBackup {

/// Where one entry of an archive goes. An entry never gets out of the folder into which it is unpacked: a name that
/// leads out of it is refused, and no symbolic link below that folder is followed, not even one that appears meanwhile.
class UnpackTarget {
public:
    /// Makes the folders on the way, the last one too when `name` ends in "/". `folder` itself may be reached through
    /// symbolic links.
    UnpackTarget(const std::string& folder, const std::string& name);

    /// Whether nothing may be written for the entry.
    bool isRefused() const { return isRefused_; }
    /// `folder` joined with the name.
    const std::string& path() const { return path_; }

    // For an entry that is a file and not refused:

    bool exists() const;
    /// The emptied file, open for writing; not open on failure, with the reason in errno.
    FileDescriptor open() const;

private:
    void enter(const std::string& folder);
    bool isLink(const std::string& name) const;

    std::string path_;
    bool isRefused_ = false;
    FileDescriptor folder_;  // the one that holds the file; not open when it could not be made
    int error_ = 0;          // why folder_ is not open
    std::string fileName_;
};

}  // namespace ZkMobileBackup
