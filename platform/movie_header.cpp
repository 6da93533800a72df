#include "platform/movie_header.h"

#include <array>
#include <limits>
#include <string_view>

namespace ZkMobileBackup {

namespace {

/// Positions from which to, but not including, which something stands in the file.
struct Range {
    std::int64_t begin = 0;
    std::int64_t end = 0;
    std::int64_t size() const { return end - begin; }
};

/// The bytes at a position; what lies outside the file or cannot be read is missing.
template <std::size_t Count>
std::optional<std::array<std::uint8_t, Count>> bytesAt(const ByteSource& file, std::int64_t position) {
    std::array<std::uint8_t, Count> bytes{};
    if (file.read(position, bytes) != Count) return std::nullopt;
    return bytes;
}

std::uint64_t bigEndian(std::span<const std::uint8_t> bytes) {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : bytes) number = number << 8 | byte;
    return number;
}

struct Box {
    std::array<char, 4> type{};
    Range content;
    bool is(std::string_view name) const { return std::string_view(type.data(), type.size()) == name; }
};

constexpr std::int64_t kShortHeader = 8;
constexpr std::int64_t kLongHeader = 16;

/// Sizes with a meaning of their own: one of 64 bits follows; the box goes on to the end.
constexpr std::uint64_t kLongSizeFollows = 1;
constexpr std::uint64_t kToTheEnd = 0;

/// The box with a header of `header` bytes; nothing when it is not larger than that, or ends behind `room`.
std::optional<Box> boxOfSize(std::uint64_t size, std::int64_t header, std::array<char, 4> type, Range room) {
    if (size < static_cast<std::uint64_t>(header) || size > static_cast<std::uint64_t>(room.size())) {
        return std::nullopt;
    }
    return Box{type, {room.begin + header, room.begin + static_cast<std::int64_t>(size)}};
}

/// The box at the beginning of `room`; nothing when there is no room for it.
std::optional<Box> boxAt(const ByteSource& file, Range room) {
    if (room.size() < kShortHeader) return std::nullopt;
    const auto header = bytesAt<kShortHeader>(file, room.begin);
    if (!header) return std::nullopt;
    const std::span<const std::uint8_t> bytes(*header);
    std::array<char, 4> type{};
    for (std::size_t k = 0; k < type.size(); ++k) type[k] = static_cast<char>(bytes[4 + k]);
    const std::uint64_t size = bigEndian(bytes.first(4));
    if (size == kToTheEnd) return boxOfSize(static_cast<std::uint64_t>(room.size()), kShortHeader, type, room);
    if (size != kLongSizeFollows) return boxOfSize(size, kShortHeader, type, room);
    const auto longSize = bytesAt<8>(file, room.begin + kShortHeader);
    return longSize ? boxOfSize(bigEndian(*longSize), kLongHeader, type, room) : std::nullopt;
}

/// Content of the first box of that type in `room`; nothing without one.
std::optional<Range> contentOfBox(const ByteSource& file, Range room, std::string_view type) {
    constexpr int kMostBoxes = 100'000;  // a file may consist of millions of empty ones
    for (int count = 0; count < kMostBoxes; ++count) {
        const std::optional<Box> box = boxAt(file, room);
        if (!box) return std::nullopt;
        if (box->is(type)) return box->content;
        room.begin = box->content.end;
    }
    return std::nullopt;
}

/// A duration with all bits set is one that is not known; one of more than 63 bits is none either.
std::int64_t knownDuration(std::uint64_t duration, std::uint64_t unknown) {
    const bool known = duration != unknown && duration <= std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    return known ? static_cast<std::int64_t>(duration) : 0;
}

// Version and flags take 4 bytes; then there are the times of creation and of change, the time scale, the duration.

std::optional<MovieHeader> shortNumbers(const ByteSource& file, Range content) {
    constexpr std::size_t kLength = 20;
    const auto bytes = content.size() >= std::int64_t{kLength} ? bytesAt<kLength>(file, content.begin) : std::nullopt;
    if (!bytes) return std::nullopt;
    const std::span<const std::uint8_t> fields(*bytes);
    return MovieHeader{.duration = knownDuration(bigEndian(fields.subspan(16, 4)), 0xFFFF'FFFF),
                       .timeScale = static_cast<std::int64_t>(bigEndian(fields.subspan(12, 4)))};
}

std::optional<MovieHeader> longNumbers(const ByteSource& file, Range content) {
    constexpr std::size_t kLength = 32;
    const auto bytes = content.size() >= std::int64_t{kLength} ? bytesAt<kLength>(file, content.begin) : std::nullopt;
    if (!bytes) return std::nullopt;
    const std::span<const std::uint8_t> fields(*bytes);
    return MovieHeader{.duration = knownDuration(bigEndian(fields.subspan(24, 8)), 0xFFFF'FFFF'FFFF'FFFF),
                       .timeScale = static_cast<std::int64_t>(bigEndian(fields.subspan(20, 4)))};
}

}  // namespace

std::optional<MovieHeader> readMovieHeader(const ByteSource& file) {
    const std::optional<Range> movie = contentOfBox(file, {0, file.size()}, "moov");
    const std::optional<Range> header = movie ? contentOfBox(file, *movie, "mvhd") : std::nullopt;
    const auto version = header ? bytesAt<1>(file, header->begin) : std::nullopt;
    if (!version || header->size() < 1) return std::nullopt;
    return version->front() == 1 ? longNumbers(file, *header) : shortNumbers(file, *header);
}

}  // namespace ZkMobileBackup
