#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"

#include <utility>

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"
#include "platform/Pictures.h"

namespace ZkMobileBackup {

namespace {

constexpr double kWidestUnscaledPhoto = 300.0;
constexpr double kPhotoScale = 0.3;

using SharedImage = std::shared_ptr<const Image>;

SharedImage imageOfPhoto(const Dictionary& info) {
    const std::string* path = info.text(kRawDBdataKey);
    SharedImage image = path != nullptr ? pictureOfFile(*path) : nullptr;
    if (image == nullptr || image->size().width <= kWidestUnscaledPhoto) return image;
    return ZkMobileBackupPhotoRecord::resizeImage(std::move(image), kPhotoScale);
}

SharedImage imageOfThumbnail(const Dictionary& info) {
    const Value* data = info.find(kRawDBdataKey);
    if (data == nullptr) return nullptr;
    if (const SharedImage* image = data->image()) return *image;
    const SharedBytes* bytes = data->bytes();
    return bytes != nullptr ? pictureOfBytes(*bytes) : nullptr;
}

void setWhenPresent(Dictionary& value, std::string_view key, const Value* entry) {
    if (entry != nullptr) value.set(key, *entry);
}

Dictionary valueOf(const Dictionary& info, std::string_view dateKey, const SharedImage& image) {
    Dictionary value;
    setWhenPresent(value, kPhotoRecordTitle, info.find(kRawDBNameKey));
    setWhenPresent(value, kPhotoRecordCreateDate, info.find(dateKey));
    value.set(kPhotoRecordThumbnail, image);
    value.set(kPhotoRecordResolution, image->size());
    return value;
}

std::optional<std::string> pathOf(const Dictionary& info) {
    const std::string* path = info.text(kRawDBdataKey);
    return path != nullptr ? std::optional(*path) : std::nullopt;
}

}  // namespace

ZkMobileBackupPhotoRecord::ZkMobileBackupPhotoRecord(std::optional<Dictionary> row, bool deleted,
                                                     std::optional<std::string> photoPath)
    : ZkMobileBackupAppDomainRecord(std::move(row), deleted), photoPath_(std::move(photoPath)) {}

std::shared_ptr<ZkMobileBackupPhotoRecord> ZkMobileBackupPhotoRecord::initWithPhotoInfo(const Dictionary& info) {
    const bool deleted = info.contains(kThumbnailDeletedKey);
    const SharedImage image = deleted ? imageOfThumbnail(info) : imageOfPhoto(info);
    if (image == nullptr) return nullptr;
    Dictionary value = valueOf(info, deleted ? kThumbnailDateKey : kRawDBdateKey, image);
    return makeRecord<ZkMobileBackupPhotoRecord>(std::move(value), deleted, deleted ? std::nullopt : pathOf(info));
}

std::shared_ptr<ZkMobileBackupPhotoRecord> ZkMobileBackupPhotoRecord::initWithDictionary(std::optional<Dictionary> row,
                                                                                         bool deleted) {
    return makeRecord<ZkMobileBackupPhotoRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupPhotoRecord::recordKeys() {
    static const RecordKeys keys{kPhotoRecordTitle, kPhotoRecordResolution, kPhotoRecordThumbnail};
    return &keys;
}

const RecordKeys* ZkMobileBackupPhotoRecord::keysOfClass() const {
    return recordKeys();
}

std::shared_ptr<const Image> ZkMobileBackupPhotoRecord::resizeImage(std::shared_ptr<const Image> image, double factor) {
    return scaledPicture(std::move(image), factor);
}

}  // namespace ZkMobileBackup
