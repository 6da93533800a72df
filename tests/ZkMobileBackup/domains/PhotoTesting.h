#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"
#include "tests/ZkMobileBackup/domains/DomainTesting.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {

constexpr Date kTaken{1'000'000.5};

inline Dictionary photoInfo(const std::string& name, const std::string& path) {
    return {{kRawDBNameKey, name}, {kRawDBdataKey, path}, {kRawDBdateKey, kTaken}};
}

inline Dictionary storeInfo(const std::string& name, const std::string& path = "") {
    return {{kThumbnailStorePathKey, path}, {kThumbnailStoreNameKey, name}};
}

/// Files of a backup, and the photo domain of them.
class PhotoFiles {
public:
    std::string add(const std::string& name, const std::vector<std::uint8_t>& bytes) {
        std::string path = folder_.path(name);
        writeBytes(path, bytes);
        return path;
    }
    PhotoFiles& addPhoto(const std::string& name, const std::vector<std::uint8_t>& bytes) {
        return addPhotoAt(name, add("photo" + std::to_string(photos.size()), bytes));
    }
    PhotoFiles& addPhotoAt(const std::string& name, const std::string& path) {
        photos.push_back(photoInfo(name, path));
        return *this;
    }
    PhotoFiles& addStore(const std::string& name, const std::vector<std::uint8_t>& bytes) {
        stores.push_back(storeInfo(name, add("store" + std::to_string(stores.size()), bytes)));
        return *this;
    }
    std::shared_ptr<ZkMobileBackupPhotoDomain> domain() const {
        return ZkMobileBackupPhotoDomain::initWithPhotos(photos, stores);
    }
    std::string path(const std::string& name) const { return folder_.path(name); }

    std::vector<Dictionary> photos;
    std::vector<Dictionary> stores;

private:
    TemporaryFolder folder_;
};

inline std::vector<std::uint8_t> smallJpeg() {
    return jpegFile(quadrants(40, 30));
}

inline std::vector<std::uint8_t> storeOf(int width, int height, std::size_t pictures) {
    const std::vector<ThumbnailSlot> slots(pictures, quadrants(width, height));
    return thumbnailStore(width, height, slots);
}

inline std::vector<std::string> titlesOf(const ZkMobileBackupAppDomain& domain) {
    std::vector<std::string> titles;
    for (const auto& record : domain.records()) titles.push_back(*record->recordValueForKey(kPhotoRecordTitle)->text());
    return titles;
}

inline std::shared_ptr<const Image> imageOf(const ZkMobileBackupAppDomainRecord& record) {
    return *record.recordValueForKey(kPhotoRecordThumbnail)->image();
}

inline Size resolutionOf(const ZkMobileBackupAppDomainRecord& record) {
    return *record.recordValueForKey(kPhotoRecordResolution)->size();
}

/// The colours in the middle of each quarter: top left, top right, bottom left, bottom right; each channel is taken for
/// full or none. Empty when the picture cannot be decoded.
inline std::vector<Canvas::Colour> quarterColours(const Image& image) {
    const std::optional<Pixels> pixels = image.pixels();
    std::vector<Canvas::Colour> colours;
    if (!pixels) return colours;
    for (const auto& [x, y] : {std::pair{1, 1}, {3, 1}, {1, 3}, {3, 3}}) {
        const auto row = static_cast<std::size_t>(pixels->height * y / 4);
        const std::size_t start =
            (row * static_cast<std::size_t>(pixels->width) + static_cast<std::size_t>(pixels->width * x / 4)) * 4;
        const auto full = [&](std::size_t channel) -> std::uint8_t {
            return pixels->rgba[start + channel] > 127 ? 255 : 0;
        };
        colours.push_back({full(0), full(1), full(2)});
    }
    return colours;
}

inline const std::vector<Canvas::Colour> kQuadrantColours{colours::kRed, colours::kGreen, colours::kBlue,
                                                          colours::kYellow};

inline void markAll(const ZkMobileBackupAppDomain& domain) {
    for (const auto& record : domain.records()) record->setShouldRecovery(true);
}

/// Calls `start`, which submits a job that is going to be stopped, and waits until the job has told so.
template <typename Start>
void runUntilStopped(ZkMobileBackupAppDomain& domain, Start&& start) {
    const auto stopped = std::make_shared<std::promise<void>>();
    domain.setStoppedHandler([stopped] { stopped->set_value(); });
    start();
    stopped->get_future().wait();
    domain.setStoppedHandler({});
}

/// Waits until no job has the domain any more.
inline void waitUntilIdle(const std::shared_ptr<ZkMobileBackupPhotoDomain>& domain) {
    while (domain.use_count() > 1) {
        MainQueue::runUntilIdle();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    domain->parser();  // takes the lock that a job took last, and so sees what the job has done
}

}  // namespace ZkMobileBackup
