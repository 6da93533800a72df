#include "recovery/DlxSQLiteReader.h"
#include "recovery/engine/byte_image.h"

namespace ZkMobileBackup {

std::shared_ptr<DlxSQLiteReader> DlxSQLiteReader::initWithDBPath(const std::string& path) {
    return withImage(engine::ByteImage::ofFile(path));
}

std::shared_ptr<DlxSQLiteReader> DlxSQLiteReader::initWithDBData(std::span<const std::uint8_t> bytes) {
    return withImage(engine::ByteImage::copyOf(bytes));
}

std::shared_ptr<DlxSQLiteReader> DlxSQLiteReader::withImage(std::unique_ptr<engine::ByteImage> image) {
    if (image == nullptr) return nullptr;
    return std::shared_ptr<DlxSQLiteReader>(new DlxSQLiteReader(std::move(image)));
}

DlxSQLiteReader::DlxSQLiteReader(std::unique_ptr<engine::ByteImage> image)
    : image_(std::move(image)), dbEnd_(image_->size() - 1), dbSize_(static_cast<std::uint64_t>(image_->size())) {}

DlxSQLiteReader::~DlxSQLiteReader() = default;

}  // namespace ZkMobileBackup
