#pragma once

#include <string>

#include "platform/FileDescriptor.h"

namespace ZkMobileBackup {

/// Takes turns with other processes of the user, and other objects of this one, that lock the same file: waits in its
/// constructor, and lets the next one go with its end. The file is made where it is missing and stays, empty. Where it
/// cannot be locked nobody waits.
class FileLock {
public:
    explicit FileLock(const std::string& path);
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Why the file is not locked; empty when it is.
    const std::string& failure() const { return failure_; }

private:
    FileDescriptor file_;
    std::string failure_;
};

}  // namespace ZkMobileBackup
