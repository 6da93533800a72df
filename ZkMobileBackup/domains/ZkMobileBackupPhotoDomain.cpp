#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <new>
#include <utility>

#include "ZkMobileBackup/domains/TzProductName.h"
#include "ZkMobileBackup/domains/thumbnail_store.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"
#include "base/Log.h"
#include "base/Text.h"
#include "platform/Files.h"
#include "platform/GlobalQueue.h"
#include "platform/Pictures.h"

namespace ZkMobileBackup {

namespace {

/// One for all domains: whoever reads a thumbnail store makes it that store's.
struct SharedBitmapHeader {
    std::mutex mutex;  // held by a parse while it reads its store
    BitmapHeader header;
};

SharedBitmapHeader& sharedBitmapHeader() {
    static SharedBitmapHeader& shared = *new SharedBitmapHeader;  // never destroyed: a parse may outlast the others
    return shared;
}

Date now() {
    return {std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count()};
}

std::string_view nameOf(const Dictionary& ithmb) {
    const std::string* name = ithmb.text(kThumbnailStoreNameKey);
    return name != nullptr ? *name : std::string_view();
}

/// The photos count for half of a parse, the thumbnails behind them for the rest.
double parseProgress(std::size_t count, std::size_t photos) {
    return static_cast<double>(count) / static_cast<double>(photos) * 0.5;
}

}  // namespace

std::shared_ptr<ZkMobileBackupPhotoDomain> ZkMobileBackupPhotoDomain::init() {
    return initWithPhotos({}, {});
}

std::shared_ptr<ZkMobileBackupPhotoDomain> ZkMobileBackupPhotoDomain::initWithPhotos(std::vector<Dictionary> photos,
                                                                                     std::vector<Dictionary> ithmbs) {
    return connected(std::shared_ptr<ZkMobileBackupPhotoDomain>(
        new ZkMobileBackupPhotoDomain(std::move(photos), std::move(ithmbs))));
}

ZkMobileBackupPhotoDomain::ZkMobileBackupPhotoDomain(std::vector<Dictionary> photos, std::vector<Dictionary> ithmbs)
    : photos_(std::move(photos)), ithmbs_(std::move(ithmbs)) {}

std::optional<std::string> ZkMobileBackupPhotoDomain::exportName() const {
    return "Photo";
}

// --- Parse -----------------------------------------------------------------------------------------------------------

void ZkMobileBackupPhotoDomain::parserWithCallbackBlock(ParserCallback callback) {
    setParserCallback(std::move(callback));
    submitJob(QueuePriority::kBackground, [this, self = shared_from_this(), start = now()]() mutable {
        if (runParse(start)) return postParserEnd(std::move(self));
        postStopped();
        letGo(std::move(self));
    });
}

/// Returns false when the host stopped it.
bool ZkMobileBackupPhotoDomain::runParse(Date start) {
    const std::lock_guard lock(parseMutex_);
    ithmbDate_ = start;
    deletedPhotoCount_ = 0;
    try {
        if (!readPhotos()) return false;
        readThumbnails();
    } catch (const std::bad_alloc&) {
        // What was found until then stays, and the end is reported.
        writeLog("There is not enough memory for all pictures of a backup.");
    }
    return true;
}

bool ZkMobileBackupPhotoDomain::readPhotos() {
    std::size_t count = 0;
    for (const Dictionary& photo : photos_) {
        appendRecord(photo);
        postParserCallback(kParserGoingOn, parseProgress(++count, photos_.size()));
        if (parserStopped()) return false;
    }
    return true;
}

void ZkMobileBackupPhotoDomain::readThumbnails() {
    const Dictionary* ithmb = _bestThumbnail(ithmbs_);
    if (ithmb == nullptr) return;
    const std::lock_guard lock(sharedBitmapHeader().mutex);
    _reset_head(*ithmb);
    if (const std::string* path = ithmb->text(kThumbnailStorePathKey)) _read_ithmb_file(path->c_str());
}

void ZkMobileBackupPhotoDomain::appendRecord(const Dictionary& info) {
    if (auto record = ZkMobileBackupPhotoRecord::initWithPhotoInfo(info)) records_.push_back(std::move(record));
}

const Dictionary* ZkMobileBackupPhotoDomain::_bestThumbnail(const std::vector<Dictionary>& ithmbs) const {
    // The first of the largest is what is found.
    const auto best = std::ranges::max_element(
        ithmbs, {}, [](const Dictionary& ithmb) { return thumbnailExtent(nameOf(ithmb)).width; });
    return best != ithmbs.end() ? &*best : nullptr;
}

void ZkMobileBackupPhotoDomain::_reset_head(const Dictionary& ithmb) {
    constexpr std::int32_t kBytesPerPixel = 2;
    const ThumbnailExtent extent = thumbnailExtent(nameOf(ithmb));
    sharedBitmapHeader().header.setExtent(extent);
    bmpSize_ = extent.width * extent.height * kBytesPerPixel;
}

void ZkMobileBackupPhotoDomain::_read_ithmb_file(const char* path) {
    if (path == nullptr) return;
    readThumbnailStore(path, static_cast<std::size_t>(bmpSize_), [&](const StoreSlot& slot) {
        if (_isDarkImage(slot.bytes, bmpSize_)) return;
        ++deletedPhotoCount_;
        // The pixels of a store with many thousands of thumbnails would fill memory.
        appendThumbnail(pictureOfBitmap16(sharedBitmapHeader().header.bytes(), path, slot.position));
    });
}

bool ZkMobileBackupPhotoDomain::_isDarkImage(std::span<const std::uint8_t> bytes, std::int32_t size) const {
    // High bytes are never looked at: this is what tells an empty slot from a picture, and hosts count on the numbers
    // that the pictures get by it.
    constexpr std::size_t kLowByteDistance = 2;
    const std::size_t end = std::min(bytes.size(), static_cast<std::size_t>(std::max(size, 0)));
    for (std::size_t i = 0; i < end; i += kLowByteDistance) {
        if (bytes[i] != 0) return false;
    }
    return true;
}

void ZkMobileBackupPhotoDomain::_write_one_bmp(std::span<const std::uint8_t> slot) {
    appendThumbnail(std::make_shared<const std::vector<std::uint8_t>>(
        bitmapFile(sharedBitmapHeader().header, slot, static_cast<std::size_t>(bmpSize_))));
}

void ZkMobileBackupPhotoDomain::appendThumbnail(Value picture) {
    appendRecord({{kRawDBNameKey, fmt::format("_{}", deletedPhotoCount_)},
                  {kRawDBdataKey, std::move(picture)},
                  {kThumbnailDateKey, ithmbDate_},
                  {kThumbnailDeletedKey, "yes"}});
}

bool ZkMobileBackupPhotoDomain::_isDeleted(std::span<const std::uint8_t, 16> bytes) const {
    return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
}

// --- Export ----------------------------------------------------------------------------------------------------------

bool ZkMobileBackupPhotoDomain::exportRecords(const Records& marked, const std::string& outputPath) {
    constexpr std::size_t kRecordsPerReport = 5;
    if (marked.empty()) return true;
    const std::string folder = joinedPath(joinedPath(outputPath, TzProductName), *exportName());
    if (!isDirectory(folder)) noteFailure(createDirectories(folder));
    OutputPaths paths;
    std::size_t number = 0;
    for (const auto& record : marked) {
        if (exportStopped()) return false;
        exportRecord(*record, folder, paths);
        if (++number % kRecordsPerReport != 0) continue;
        postExportCallback(kExportGoingOn, static_cast<double>(number) / static_cast<double>(marked.size()));
    }
    return true;
}

void ZkMobileBackupPhotoDomain::exportRecord(const ZkMobileBackupAppDomainRecord& record, const std::string& folder,
                                             OutputPaths& paths) {
    const auto path = targetOf(record, kPhotoRecordTitle, folder, ".JPG");
    if (!path) return;
    if (!record.isDeleted()) return copyPhoto(record, *path, paths);
    const Value* thumbnail = record.recordValueForKey(kPhotoRecordThumbnail);
    const auto* image = thumbnail != nullptr ? thumbnail->image() : nullptr;
    saveImage(image != nullptr ? *image : nullptr, *path, paths);
}

void ZkMobileBackupPhotoDomain::copyPhoto(const ZkMobileBackupAppDomainRecord& record, const std::string& path,
                                          OutputPaths& paths) {
    const auto* photo = dynamic_cast<const ZkMobileBackupPhotoRecord*>(&record);
    if (photo == nullptr || !photo->photoPath()) return noteFailure(fmt::format("There is no photo for '{}'.", path));
    noteWritten(copyToNewFile(*photo->photoPath(), path, paths));
}

bool ZkMobileBackupPhotoDomain::saveImage(const std::shared_ptr<const Image>& image, const std::string& path) {
    OutputPaths paths;
    return saveImage(image, path, paths);
}

bool ZkMobileBackupPhotoDomain::saveImage(const std::shared_ptr<const Image>& image, const std::string& path,
                                          OutputPaths& paths) {
    constexpr int kJpegQuality = 90;
    const auto jpeg = image != nullptr ? jpegOfPicture(*image, kJpegQuality) : std::nullopt;
    if (!jpeg) {
        noteFailure(fmt::format("The picture for '{}' cannot be decoded.", path));
        return false;
    }
    const WrittenFile file = writeNewFile(path, {reinterpret_cast<const char*>(jpeg->data()), jpeg->size()}, paths);
    noteWritten(file);
    return !file.path.empty();
}

}  // namespace ZkMobileBackup
