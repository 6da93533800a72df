#include "recovery/engine/byte_image.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZkMobileBackup::engine {

namespace {

class OpenFile {
public:
    explicit OpenFile(const std::string& path) : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int descriptor() const { return descriptor_; }
    /// Length of a regular file, -1 for anything else.
    std::int64_t regularSize() const {
        struct stat status {};
        const bool regular = descriptor_ >= 0 && fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
        return regular ? status.st_size : -1;
    }

private:
    int descriptor_;
};

}  // namespace

std::unique_ptr<ByteImage> ByteImage::ofFile(const std::string& path) {
    const OpenFile file(path);
    const std::int64_t size = file.regularSize();
    if (size < 0) return nullptr;
    if (size == 0) return copyOf({});  // nothing can be mapped
    void* mapping =
        mmap(nullptr, static_cast<std::size_t>(size), PROT_READ | PROT_WRITE, MAP_PRIVATE, file.descriptor(), 0);
    if (mapping == MAP_FAILED) return nullptr;
    return std::unique_ptr<ByteImage>(new ByteImage(static_cast<std::uint8_t*>(mapping), size, Storage::kMapping));
}

std::unique_ptr<ByteImage> ByteImage::copyOf(std::span<const std::uint8_t> bytes) {
    auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return std::unique_ptr<ByteImage>(
        new ByteImage(copy.release(), static_cast<std::int64_t>(bytes.size()), Storage::kHeap));
}

ByteImage::~ByteImage() {
    if (storage_ == Storage::kMapping) {
        munmap(data_, static_cast<std::size_t>(size_));
    } else {
        delete[] data_;
    }
}

Varint ByteImage::longVarint(std::int64_t position, std::int64_t available) const {
    if (const std::uint8_t* at = readable(position, available)) {
        return readVarint([at](std::int64_t i) { return at[i]; }, available);
    }
    return readVarint([this, position](std::int64_t i) { return byte(position + i); }, available);
}

void ByteImage::splice(std::int64_t destination, std::int64_t source, std::int64_t length) {
    if (destination < 0 || destination >= size_ || length <= 0) return;
    const std::int64_t landing = std::min(length, size_ - destination);
    const std::span<const std::uint8_t> available = bytes(source, landing);
    std::uint8_t* target = data_ + destination;
    if (!available.empty()) std::memmove(target, available.data(), available.size());
    std::memset(target + available.size(), 0, static_cast<std::size_t>(landing) - available.size());
}

}  // namespace ZkMobileBackup::engine
