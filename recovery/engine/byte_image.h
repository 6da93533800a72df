#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "recovery/engine/varint.h"

namespace ZkMobileBackup::engine {

/// The bytes of a database file: a private copy that splicing may change. Positions count from the first byte and may
/// lie anywhere; past either end a byte reads as 0. No other code of the engine touches the bytes' addresses.
class ByteImage {
public:
    /// A private writable mapping of a regular file; null when it cannot be opened or read.
    static std::unique_ptr<ByteImage> ofFile(const std::string& path);
    static std::unique_ptr<ByteImage> copyOf(std::span<const std::uint8_t> bytes);
    ~ByteImage();
    ByteImage(const ByteImage&) = delete;
    ByteImage& operator=(const ByteImage&) = delete;

    std::int64_t size() const { return size_; }

    std::uint8_t byte(std::int64_t position) const {
        const std::uint8_t* at = readable(position, 1);
        return at != nullptr ? *at : 0;
    }
    std::uint16_t big16(std::int64_t position) const {
        return static_cast<std::uint16_t>(byte(position) << 8 | byte(position + 1));
    }
    std::uint32_t big32(std::int64_t position) const {
        const std::uint8_t* at = readable(position, 4);
        if (at == nullptr) return std::uint32_t{big16(position)} << 16 | big16(position + 2);
        return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
    }

    /// The part of `length` bytes from `position` on that lies in the image.
    std::span<const std::uint8_t> bytes(std::int64_t position, std::int64_t length) const {
        if (position < 0 || position >= size_ || length <= 0) return {};
        return {data_ + position, static_cast<std::size_t>(std::min(length, size_ - position))};
    }

    /// The number at `position`, read up to but not including the byte at `limit`.
    Varint varint(std::int64_t position, std::int64_t limit) const {
        return varintOfAtMost(position, limit - position);
    }
    /// The same, given up after the first byte that makes it too long: a run of continuation bytes must not be read
    /// again from each of its bytes on.
    Varint shortVarint(std::int64_t position, std::int64_t limit) const {
        const std::int64_t available = limit - position;
        constexpr std::int64_t kEnough = Varint::kMostBytes + 1;
        return varintOfAtMost(position, available < kEnough ? available : kEnough);
    }

    /// Has the processor fetch bytes that will soon be read, where they lie in the image; reads none.
    void fetchAhead(std::int64_t position, std::int64_t length) const {
        constexpr std::size_t kCacheLine = 64;
        const std::span<const std::uint8_t> ahead = bytes(position, length);
        for (std::size_t at = 0; at < ahead.size(); at += kCacheLine) __builtin_prefetch(&ahead[at]);
    }

    /// Copies `length` bytes as they stand before the copy, source bytes outside the image being 0; what would land
    /// outside the image is dropped.
    void splice(std::int64_t destination, std::int64_t source, std::int64_t length);

private:
    enum class Storage { kHeap, kMapping };
    ByteImage(std::uint8_t* bytes, std::int64_t size, Storage storage) : data_(bytes), size_(size), storage_(storage) {}

    /// The one check: the address of `length` bytes at `position`, null unless all of them lie in the image. In
    /// unsigned numbers, where a negative one is larger than any image.
    const std::uint8_t* readable(std::int64_t position, std::int64_t length) const {
        const auto start = static_cast<std::uint64_t>(position);
        const auto size = static_cast<std::uint64_t>(size_);
        const bool inside = start < size && static_cast<std::uint64_t>(length) <= size - start;
        return inside ? data_ + start : nullptr;
    }
    Varint varintOfAtMost(std::int64_t position, std::int64_t available) const {
        // Nearly all numbers take one byte or two.
        if (const std::uint8_t* at = available >= 2 ? readable(position, 2) : nullptr) {
            if (at[0] < 0x80) return {at[0], 1, 1};
            if (at[1] < 0x80) return {std::uint64_t{at[0] & 0x7FU} << 7U | at[1], 2, 2};
        }
        return longVarint(position, available);
    }
    Varint longVarint(std::int64_t position, std::int64_t available) const;

    std::uint8_t* data_;
    std::int64_t size_;
    Storage storage_;
};

}  // namespace ZkMobileBackup::engine
