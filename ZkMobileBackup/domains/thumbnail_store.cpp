#include "ZkMobileBackup/domains/thumbnail_store.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <utility>

#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

struct StoreGeometry {
    std::string_view name;
    ThumbnailExtent extent;
};

constexpr std::array<StoreGeometry, 4> kStoreGeometries{{
    {"3303.ithmb", {24, 22}},
    {"3309.ithmb", {64, 64}},
    {"3319.ithmb", {160, 157}},
    {"4031.ithmb", {120, 120}},
}};

static_assert(sizeof(BitmapHeader) == 54 && std::is_trivially_copyable_v<BitmapHeader>);

/// Ends the process in every kind of build. The source is named as hosts know it from the lines they collect.
[[noreturn]] void failAssertion(const char* condition) {
    constexpr const char* kSource = "ZkMobileBackup/ZkMobileBackupAppDomain";
    std::fprintf(stderr, "%s: assertion failed: %s\n", kSource, condition);
    std::abort();
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using StoreFile = std::unique_ptr<std::FILE, CloseFile>;

StoreFile openStore(const std::string& path) {
    FileDescriptor descriptor = openRegularFile(path);
    if (!descriptor.isOpen()) return nullptr;
    StoreFile file(::fdopen(descriptor.get(), "rb"));
    if (file != nullptr) descriptor.release();
    return file;
}

void closeStore(StoreFile file) {
    const int ret = std::fclose(file.release());
    if (ret != 0) failAssertion("ret == 0");
}

std::size_t sizeOfStore(const StoreFile& file) {
    const int ret = ::fseeko(file.get(), 0, SEEK_END);
    if (ret != 0) failAssertion("ret == 0");
    const off_t filesize = ::ftello(file.get());
    if (filesize == -1) failAssertion("filesize != -1");
    return static_cast<std::size_t>(filesize);
}

struct Free {
    void operator()(std::uint8_t* bytes) const { std::free(bytes); }
};
using SlotBuffer = std::unique_ptr<std::uint8_t, Free>;

SlotBuffer zeroedSlot(std::size_t size) {
    SlotBuffer bmpdata(static_cast<std::uint8_t*>(std::calloc(1, size)));
    if (bmpdata == nullptr) failAssertion("bmpdata != NULL");
    return bmpdata;
}

void readSlot(const StoreFile& file, std::uint8_t* slot, std::size_t size) {
    const std::size_t ret_size = std::fread(slot, 1, size, file.get());
    if (ret_size != size) failAssertion("ret_size == 1 *(_bmpSize + BMPOFFSET)");
}

}  // namespace

ThumbnailExtent thumbnailExtent(std::string_view storeName) {
    const auto* found = std::ranges::find(kStoreGeometries, storeName, &StoreGeometry::name);
    return found != kStoreGeometries.end() ? found->extent : ThumbnailExtent{};
}

void readThumbnailStore(const std::string& path, std::size_t pixelBytes,
                        const std::function<void(const StoreSlot& slot)>& take) {
    const std::size_t slotSize = pixelBytes + kSlotTail;
    StoreFile file = openStore(path);
    if (file == nullptr) return;
    const std::size_t filesize = sizeOfStore(file);
    closeStore(std::move(file));
    if (filesize == 0) return;

    const SlotBuffer slot = zeroedSlot(slotSize);
    file = openStore(path);
    if (file == nullptr) failAssertion("fp != NULL");
    // No slot without pixels holds a picture, and a sparse file has any number of them.
    const std::size_t slots = pixelBytes > 0 ? filesize / slotSize : 0;
    for (std::size_t i = 0; i < slots; ++i) {
        readSlot(file, slot.get(), slotSize);
        take({{slot.get(), slotSize}, static_cast<std::int64_t>(i * slotSize)});
    }
    closeStore(std::move(file));
}

void BitmapHeader::setExtent(ThumbnailExtent extent) {
    width = LittleEndian<4>(extent.width);
    height = LittleEndian<4>(-extent.height);
}

std::span<const std::uint8_t> BitmapHeader::bytes() const {
    return {reinterpret_cast<const std::uint8_t*>(this), sizeof(*this)};
}

std::vector<std::uint8_t> bitmapFile(const BitmapHeader& header, std::span<const std::uint8_t> slot,
                                     std::size_t pixelBytes) {
    const auto pixels = slot.first(std::min(slot.size(), pixelBytes));
    std::vector<std::uint8_t> file;
    file.reserve(header.bytes().size() + pixels.size());
    file.insert(file.end(), header.bytes().begin(), header.bytes().end());
    file.insert(file.end(), pixels.begin(), pixels.end());
    return file;
}

}  // namespace ZkMobileBackup
