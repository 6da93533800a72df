// bench_photos make FOLDER     writes 500 JPEG files of 12 megapixels into an empty folder
// bench_photos records FOLDER  makes the records of those photos and looks at their thumbnails
// bench_photos store           makes the records of a thumbnail store of 5,000 pictures; prints "store OWN PEER", the
//                              time in seconds against that of reading the file slot by slot, and "memory OWN PEER",
//                              the heap that the records take against the bytes of the store
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"
#include "base/Image.h"
#include "bench/Measure.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

constexpr int kPhotos = 500;
constexpr int kSlots = 5'000;
constexpr int kRuns = 5;

// The widest store.
constexpr const char* kStoreName = "3319.ithmb";
constexpr int kWidth = 160;
constexpr int kHeight = 157;
constexpr std::size_t kSlotSize = kWidth * kHeight * 2 + 28;

/// One file under 500 names: a decoder reads each as a file of its own.
void makePhotos(const std::string& folder) {
    const std::string first = folder + "/0.jpg";
    writeBytes(first, jpegFile(detailedQuadrants(4000, 3000)));
    for (int i = 1; i < kPhotos; ++i) {
        std::filesystem::create_hard_link(first, folder + "/" + std::to_string(i) + ".jpg");
    }
}

void lookAtPhotos(const std::string& folder) {
    std::vector<std::shared_ptr<ZkMobileBackupPhotoRecord>> records;
    for (int i = 0; i < kPhotos; ++i) {
        records.push_back(
            ZkMobileBackupPhotoRecord::initWithPhotoInfo({{kRawDBdataKey, folder + "/" + std::to_string(i) + ".jpg"}}));
        if (records.back() == nullptr) throw std::runtime_error("a photo gave no record");
    }
    for (const auto& record : records) {
        const auto pixels = (*record->recordValueForKey(kPhotoRecordThumbnail)->image())->pixels();
        if (!pixels || pixels->width != 1200) throw std::runtime_error("a photo could not be decoded");
    }
}

void makeStore(const std::string& path) {
    const std::array<ThumbnailSlot, 1> slots{detailedQuadrants(kWidth, kHeight)};
    const auto slot = thumbnailStore(kWidth, kHeight, slots);
    std::ofstream file(path, std::ios::binary);
    for (int i = 0; i < kSlots; ++i) {
        file.write(reinterpret_cast<const char*>(slot.data()), static_cast<std::streamsize>(slot.size()));
    }
}

std::shared_ptr<ZkMobileBackupPhotoDomain> recordsOf(const std::string& path) {
    auto domain = ZkMobileBackupPhotoDomain::init();
    domain->_reset_head({{kThumbnailStoreNameKey, kStoreName}});
    domain->_read_ithmb_file(path.c_str());
    if (domain->records().size() != kSlots) throw std::runtime_error("a thumbnail gave no record");
    return domain;
}

void readSlots(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    std::vector<unsigned char> slot(kSlotSize);
    int count = 0;
    while (std::fread(slot.data(), slot.size(), 1, file.get()) == 1) ++count;
    if (count != kSlots) throw std::runtime_error("the store could not be read");
}

void measureStore() {
    const TemporaryFolder folder;
    const std::string path = folder.path(kStoreName);
    makeStore(path);
    const double peer = leastSeconds(kRuns, [&] { readSlots(path); });
    const double own = leastSecondsToMake(kRuns, [&] { return recordsOf(path); });
    std::cout << "store " << own << ' ' << peer << '\n';
    const std::size_t before = heapBytes();
    const auto domain = recordsOf(path);
    std::cout << "memory " << heapBytes() - before << ' ' << kSlots * kSlotSize << '\n';
}

constexpr const char* kUsage = "usage: bench_photos make FOLDER | records FOLDER | store\n";

bool run(const std::vector<std::string>& arguments) {
    if (arguments.size() == 2 && arguments[0] == "make") {
        makePhotos(arguments[1]);
    } else if (arguments.size() == 2 && arguments[0] == "records") {
        lookAtPhotos(arguments[1]);
    } else if (arguments.size() == 1 && arguments[0] == "store") {
        measureStore();
    } else {
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (run({argv + 1, argv + argc})) return 0;
        std::cerr << kUsage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "bench_photos: " << error.what() << '\n';
        return 1;
    }
}
