#pragma once

#include <cstdint>
#include <string>

#include "platform/FileDescriptor.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

/// The bytes of a file on their way to a new one, piece by piece. What was copied stays when the rest is not.
class FileCopy {
public:
    /// Makes an empty file at the first free name after `target` (see OutputPaths), also when others claim names
    /// meanwhile, and then opens `source`, a regular file, for reading. `finish` tells what failed; the empty file
    /// stays when there is no source to fill it.
    FileCopy(std::string source, const std::string& target, OutputPaths& paths);

    /// Whether there is something to copy, and somewhere to copy it to.
    bool isOpen() const { return source_.isOpen(); }
    /// Bytes that the source had beyond what was copied, when it was opened.
    std::uint64_t left() const { return size_ > position_ ? size_ - position_ : 0; }
    /// Copies the next bytes and returns their number: fewer than `count` at the end of the source, and on failure.
    std::uint64_t copyNext(std::uint64_t count);
    /// Copies all up to where the source ends at this moment; what it grows by from now on is left out.
    void copyRest();
    /// Closes both files. A source that has become shorter than it was is a failure.
    WrittenFile finish();
    /// Closes both files before the end. A target that is only a part of the source is a failure.
    WrittenFile finishEarly();

private:
    void makeTarget(const std::string& path, OutputPaths& paths);
    void openSource();
    void fail(std::string failure);

    std::string sourcePath_;
    std::string targetPath_;
    FileDescriptor source_;
    FileDescriptor target_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
    std::string failure_;  // the first one
};

}  // namespace ZkMobileBackup
