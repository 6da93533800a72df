#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/FileDescriptor.h"

namespace ZkMobileBackup {

/// A file that is written piece by piece and then replaces another of its name: readers find the old one or the whole
/// new one. Unless it is finished nothing stays behind.
class FileReplacement {
public:
    explicit FileReplacement(std::string path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Does nothing once something has failed.
    void append(std::string_view bytes);
    /// The same with what was appended to another file from a position on; with its failure where it has one.
    void appendContentOf(const FileReplacement& file, std::uint64_t position);
    /// Stores the file under its name. Returns an empty text, or the reason of the first failure.
    std::string finish();

private:
    void check(bool done);

    std::string path_;
    std::string temporaryPath_;
    FileDescriptor file_;
    bool failed_ = false;
    int error_ = 0;  // of the first failure
};

}  // namespace ZkMobileBackup
