#include "tests/support/MediaFiles.h"

#include <algorithm>
#include <array>
#include <memory>
#include <png.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <turbojpeg.h>

#include "tests/support/ByteBuilder.h"
#include "tests/support/CommandRun.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using Bytes = std::vector<std::uint8_t>;

// JPEG

constexpr std::size_t kStartOfImage = 2;

/// A marker segment with EXIF data that says the orientation and nothing else.
Bytes orientationSegment(int orientation) {
    constexpr unsigned kSegmentLength = 2 + 6 + 8 + 2 + 12 + 4;
    ByteBuilder segment;
    segment.u16(0xFFE1).u16(kSegmentLength).text("Exif").u16(0);
    segment.text("MM").u16(42).u32(8);                                                 // big-endian TIFF
    segment.u16(1);                                                                    // one entry:
    segment.u16(0x0112).u16(3).u32(1).u16(static_cast<unsigned>(orientation)).u16(0);  // orientation, a short
    segment.u32(0);                                                                    // no further directory
    return segment.bytes();
}

struct TurboJpegBuffer {
    ~TurboJpegBuffer() { tjFree(data); }
    unsigned char* data = nullptr;
    unsigned long size = 0;
};

Bytes plainJpeg(const Canvas& picture, const JpegOptions& options) {
    const std::unique_ptr<void, int (*)(tjhandle)> compressor(tjInitCompress(), tjDestroy);
    TurboJpegBuffer file;
    const int flags = TJFLAG_ACCURATEDCT | (options.progressive ? TJFLAG_PROGRESSIVE : 0);
    if (tjCompress2(compressor.get(), picture.rgb.data(), picture.width, 0, picture.height, TJPF_RGB, &file.data,
                    &file.size, TJSAMP_420, options.quality, flags) != 0) {
        throw std::runtime_error(tjGetErrorStr2(compressor.get()));
    }
    return {file.data, file.data + file.size};
}

// PNG

template <typename Sample>
Bytes encodedPng(const Canvas& picture, std::uint32_t format, const std::vector<Sample>& samples) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = format;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    Bytes file(size);
    if (png_image_write_to_memory(&image, file.data(), &size, 0, samples.data(), 0, nullptr) == 0) {
        throw std::runtime_error(image.message);
    }
    file.resize(size);
    return file;
}

Bytes withTransparentYellow(const Canvas& picture) {
    Bytes samples;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Canvas::Colour colour = picture.at(x, y);
            samples.insert(samples.end(), colour.begin(), colour.end());
            samples.push_back(colour == colours::kYellow ? 0 : 255);
        }
    }
    return samples;
}

// Thumbnail stores

constexpr std::size_t kSlotTail = 28;

unsigned fiveBits(std::uint8_t part) {
    return part >> 3U;
}

void appendSlot(ByteBuilder& store, const Canvas& picture) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const auto [red, green, blue] = picture.at(x, y);
            const unsigned pixel = fiveBits(red) << 10U | fiveBits(green) << 5U | fiveBits(blue);
            store.u8(pixel & 0xFFU).u8(pixel >> 8U);
        }
    }
}

// Movies

constexpr int kFramesPerSecond = 30;

/// Offsets from the beginning of a box in its version 0, which ffmpeg writes for short movies.
constexpr std::size_t kBoxContent = 8;
constexpr std::size_t kMovieHeaderSize = 108;
constexpr std::size_t kTrackMatrix = 48;

std::uint32_t numberAt(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < 4; ++index) value = value << 8U | bytes.at(offset + index);
    return value;
}

void put(Bytes& bytes, std::size_t offset, const Bytes& replacement) {
    std::ranges::copy(replacement, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

/// The first box of the name among those that begin at `offset`.
std::size_t boxAt(const Bytes& movie, std::size_t offset, std::string_view name) {
    while (!std::ranges::equal(std::span(movie).subspan(offset + 4, 4), bytesOf(name))) {
        offset += numberAt(movie, offset);
    }
    return offset;
}

/// The matrix that turns a stored frame clockwise into the upright one.
Bytes displayMatrix(int rotation, int storedWidth, int storedHeight) {
    constexpr std::uint32_t kOne = 0x0001'0000;
    constexpr std::uint32_t kMinusOne = 0xFFFF'0000;
    constexpr std::uint32_t kOneOfDivisor = 0x4000'0000;
    const std::uint32_t width = static_cast<std::uint32_t>(storedWidth) << 16U;
    const std::uint32_t height = static_cast<std::uint32_t>(storedHeight) << 16U;
    ByteBuilder matrix;
    switch (rotation) {
        case 90:
            matrix.u32(0).u32(kOne).u32(0).u32(kMinusOne).u32(0).u32(0).u32(height).u32(0);
            break;
        case 180:
            matrix.u32(kMinusOne).u32(0).u32(0).u32(0).u32(kMinusOne).u32(0).u32(width).u32(height);
            break;
        case 270:
            matrix.u32(0).u32(kMinusOne).u32(0).u32(kOne).u32(0).u32(0).u32(0).u32(width);
            break;
        default:
            throw std::runtime_error("no such rotation");
    }
    return matrix.u32(kOneOfDivisor).bytes();
}

int orientationOf(int rotation) {
    switch (rotation) {
        case 90:
            return 6;
        case 180:
            return 3;
        case 270:
            return 8;
        default:
            return 1;
    }
}

void turn(Bytes& movie, const MovieOptions& options) {
    const bool onItsSide = options.rotation % 180 != 0;
    const int width = onItsSide ? options.height : options.width;
    const int height = onItsSide ? options.width : options.height;
    const std::size_t track = boxAt(movie, boxAt(movie, 0, "moov") + kBoxContent, "trak");
    const std::size_t header = boxAt(movie, track + kBoxContent, "tkhd");
    put(movie, header + kTrackMatrix, displayMatrix(options.rotation, width, height));
}

/// Makes the movie header one with 64-bit times. It lies behind the frames, so that these stay where they are.
void widenTimes(Bytes& movie) {
    const std::size_t box = boxAt(movie, 0, "moov");
    const std::size_t header = boxAt(movie, box + kBoxContent, "mvhd");
    ByteBuilder wide;
    wide.u32(kMovieHeaderSize + 12).text("mvhd").u8(1).u8(0).u16(0);
    wide.u64(numberAt(movie, header + 12)).u64(numberAt(movie, header + 16));
    wide.u32(numberAt(movie, header + 20)).u64(numberAt(movie, header + 24));
    wide.bytes(std::span(movie).subspan(header + 28, kMovieHeaderSize - 28));
    put(movie, box, ByteBuilder().u32(numberAt(movie, box) + 12).bytes());
    const auto begin = movie.begin() + static_cast<std::ptrdiff_t>(header);
    const auto rest = movie.erase(begin, begin + static_cast<std::ptrdiff_t>(kMovieHeaderSize));
    movie.insert(rest, wide.bytes().begin(), wide.bytes().end());
}

/// The stored frames, one behind the other.
Bytes rawFrames(const MovieOptions& options) {
    const auto frame = [&](int digit) {
        return storedWithOrientation(numberedQuadrants(options.width, options.height, digit),
                                     orientationOf(options.rotation))
            .rgb;
    };
    Bytes frames = frame(1);
    const Bytes later = frame(2);
    for (int count = 1; count < options.frames; ++count) frames.insert(frames.end(), later.begin(), later.end());
    return frames;
}

std::string pictureArguments(const MovieOptions& options, const std::string& frames) {
    const Canvas stored = storedWithOrientation(Canvas(options.width, options.height), orientationOf(options.rotation));
    return " -f rawvideo -pixel_format rgb24 -framerate " + std::to_string(kFramesPerSecond) + " -video_size " +
           std::to_string(stored.width) + "x" + std::to_string(stored.height) + " -i '" + frames + "'";
}

std::string soundArguments(const MovieOptions& options) {
    return " -f lavfi -i sine=duration=" + std::to_string(static_cast<double>(options.frames) / kFramesPerSecond);
}

/// One thread and no version texts, so that the same bytes come out each time.
std::string outputArguments(const MovieOptions& options, const std::string& path) {
    return std::string(" -threads 1 -c:v libx264 -preset ultrafast -crf 18 -bf 0 -pix_fmt yuv420p -c:a aac") +
           " -fflags +bitexact -flags:v +bitexact -flags:a +bitexact -movie_timescale " +
           std::to_string(options.timeScale) + (options.mp4 ? " -f mp4 '" : " -f mov '") + path + "' 2>&1";
}

}  // namespace

std::vector<std::uint8_t> jpegFile(const Canvas& upright, const JpegOptions& options) {
    Bytes file = plainJpeg(storedWithOrientation(upright, options.orientation), options);
    if (options.orientation == 1) return file;
    const Bytes segment = orientationSegment(options.orientation);
    file.insert(file.begin() + kStartOfImage, segment.begin(), segment.end());
    return file;
}

std::vector<std::uint8_t> pngFile(const Canvas& picture, PngKind kind) {
    switch (kind) {
        case PngKind::Rgb:
            return encodedPng(picture, PNG_FORMAT_RGB, picture.rgb);
        case PngKind::Rgba:
            return encodedPng(picture, PNG_FORMAT_RGBA, withTransparentYellow(picture));
        case PngKind::Rgb16:
            break;
    }
    std::vector<std::uint16_t> samples;
    for (const std::uint8_t part : picture.rgb) samples.push_back(static_cast<std::uint16_t>(part * 257));
    return encodedPng(picture, PNG_FORMAT_LINEAR_RGB, samples);
}

std::vector<std::uint8_t> thumbnailStore(int width, int height, std::span<const ThumbnailSlot> slots) {
    ByteBuilder store;
    for (const ThumbnailSlot& slot : slots) {
        if (slot.has_value() && (slot->width != width || slot->height != height)) {
            throw std::runtime_error("a picture of another size than the slots of its store");
        }
        appendSlot(store, slot.value_or(Canvas(width, height)));
        store.fill(kSlotTail, 0xEE);
    }
    return store.bytes();
}

std::vector<std::uint8_t> movieFile(const MovieOptions& options) {
    const TemporaryFolder folder;
    std::string command = "ffmpeg -nostdin -hide_banner -loglevel error";
    if (options.picture) {
        writeBytes(folder.path("frames"), rawFrames(options));
        command += pictureArguments(options, folder.path("frames"));
    }
    if (options.sound) command += soundArguments(options);
    const CommandRun run = runCommand(command + outputArguments(options, folder.path("movie")));
    if (run.status != 0) throw std::runtime_error("ffmpeg: " + run.output);
    Bytes movie = readBytes(folder.path("movie"));
    if (options.picture && options.rotation != 0) turn(movie, options);
    if (options.longTimes) widenTimes(movie);
    return movie;
}

}  // namespace ZkMobileBackup
