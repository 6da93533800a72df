#include "export/PartWritingCreator.h"

#include <utility>

namespace ZkMobileBackup {

PartWritingCreator::PartWritingCreator(const PackageFormat& format, Rows rows, std::string savePath,
                                       std::shared_ptr<FileCreator> partWriter)
    : PackagedCreator(format, std::move(rows), std::move(savePath)), partWriter_(std::move(partWriter)) {}

void PartWritingCreator::setFileCreatorDelegate(FileCreatorDelegate* delegate) {
    PackagedCreator::setFileCreatorDelegate(delegate);
    partWriter_->setFileCreatorDelegate(delegate);
}

void PartWritingCreator::setIndex(std::int64_t index) {
    PackagedCreator::setIndex(index);
    partWriter_->setIndex(index);
}

void PartWritingCreator::setCount(std::int64_t count) {
    PackagedCreator::setCount(count);
    partWriter_->setCount(count);
}

void PartWritingCreator::setProfile(Profile profile) {
    PackagedCreator::setProfile(profile);
    partWriter_->setProfile(profile);
}

}  // namespace ZkMobileBackup
