#include "platform/FileCopy.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <utility>

namespace ZkMobileBackup {

FileCopy::FileCopy(std::string source, const std::string& target, OutputPaths& paths) : sourcePath_(std::move(source)) {
    makeTarget(target, paths);
    if (target_.isOpen()) openSource();
}

void FileCopy::makeTarget(const std::string& path, OutputPaths& paths) {
    do {
        targetPath_ = paths.next(path);
        target_ = FileDescriptor(
            ::open(targetPath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kReadableByAll));
    } while (!target_.isOpen() && errno == EEXIST);
    if (!target_.isOpen()) fail(writeFailure(targetPath_, errno));
}

void FileCopy::openSource() {
    source_ = openRegularFile(sourcePath_);
    if (!source_.isOpen()) return fail(readFailure(sourcePath_, errno));
    size_ = source_.size();
}

std::uint64_t FileCopy::copyNext(std::uint64_t count) {
    const std::uint64_t begin = position_;
    if (!target_.writeContentOf(source_, position_, count)) fail(copyFailure(sourcePath_, targetPath_, errno));
    return position_ - begin;
}

void FileCopy::copyRest() {
    const std::uint64_t end = source_.size();
    if (end > position_) copyNext(end - position_);
}

WrittenFile FileCopy::finish() {
    if (left() > 0) fail(shortenedFailure(sourcePath_));
    source_.close();
    if (!target_.close()) fail(writeFailure(targetPath_, errno));
    return failure_.empty() ? WrittenFile{targetPath_, {}} : WrittenFile{{}, failure_};
}

WrittenFile FileCopy::finishEarly() {
    if (left() > 0) fail(fmt::format("'{}' is only a part of '{}', or empty.", targetPath_, sourcePath_));
    return finish();
}

void FileCopy::fail(std::string failure) {
    if (failure_.empty()) failure_ = std::move(failure);
}

}  // namespace ZkMobileBackup
