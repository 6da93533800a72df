#include "platform/FileReplacement.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "platform/Files.h"

namespace ZkMobileBackup {

FileReplacement::FileReplacement(std::string path)
    : path_(std::move(path)), temporaryPath_(temporaryPathBeside(path_)) {
    file_ = FileDescriptor(::open(temporaryPath_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kReadableByAll));
    check(file_.isOpen());
    if (failed_) temporaryPath_.clear();  // whoever owns what stands there
}

FileReplacement::~FileReplacement() {
    if (!temporaryPath_.empty()) ::unlink(temporaryPath_.c_str());
}

void FileReplacement::append(std::string_view bytes) {
    if (!failed_) check(file_.write(bytes));
}

void FileReplacement::appendContentOf(const FileReplacement& file, std::uint64_t position) {
    if (failed_) return;
    errno = file.error_;
    check(!file.failed_ && file_.writeContentOf(file.file_, position));
}

std::string FileReplacement::finish() {
    if (!failed_) check(::fsync(file_.get()) == 0);
    if (!failed_) check(file_.close());
    if (!failed_) check(::rename(temporaryPath_.c_str(), path_.c_str()) == 0);
    if (failed_) return writeFailure(path_, error_);
    temporaryPath_.clear();
    return {};
}

void FileReplacement::check(bool done) {
    if (done) return;
    error_ = errno;
    failed_ = true;
}

}  // namespace ZkMobileBackup
