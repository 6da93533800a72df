// The picture codec over libvips, in a module of its own.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <glib-object.h>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <vips/vips.h>

#include "platform/codecs/PictureCodec.h"

namespace ZkMobileBackup {

namespace {

struct Unreferenced {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using ImageReference = std::unique_ptr<VipsImage, Unreferenced>;

/// Loaders for what a backup holds. libvips has more, some of them for formats that are programs or name other files.
constexpr std::array<std::string_view, 5> kLoaders = {"VipsForeignLoadJpegSource", "VipsForeignLoadPngSource",
                                                      "VipsForeignLoadNsgifSource", "VipsForeignLoadTiffSource",
                                                      "VipsForeignLoadWebpSource"};

// A damaged or hostile file ends after so much work: what is read until a picture's extent is known, and the scans of a
// JPEG, each of which goes over the whole picture again. Encoders write some ten.
constexpr std::int64_t kMostHeaderBytes = std::int64_t{32} << 20;
constexpr int kMostScans = 200;

// What one pixel may have before it is brought to 8 bits a channel: five channels as of CMYK with opacity, or four of
// floating numbers.
constexpr int kMostChannels = 5;
constexpr std::size_t kMostBytesOfPixel = 16;

/// Counts the scans of a JPEG whose bytes pass by in order, some of them again. Within a scan's data the two bytes that
/// begin one never stand.
class ScanCounter {
public:
    explicit ScanCounter(const ByteSource& bytes) {
        std::array<std::uint8_t, 2> first{};
        isJpeg_ = bytes.read(0, first) == first.size() && first[0] == kMark && first[1] == kStartOfImage;
    }
    void pass(std::int64_t position, std::span<const std::uint8_t> bytes) {
        const std::int64_t end = position + static_cast<std::int64_t>(bytes.size());
        if (!isJpeg_ || position > counted_ || end <= counted_) return;
        for (const std::uint8_t byte : bytes.subspan(static_cast<std::size_t>(counted_ - position))) {
            if (last_ == kMark && byte == kStartOfScan) ++scans_;
            last_ = byte;
        }
        counted_ = end;
    }
    bool tooMany() const { return scans_ > kMostScans; }

private:
    static constexpr std::uint8_t kMark = 0xFF;
    static constexpr std::uint8_t kStartOfImage = 0xD8;
    static constexpr std::uint8_t kStartOfScan = 0xDA;

    bool isJpeg_ = false;
    std::int64_t counted_ = 0;  // bytes that were looked at
    std::uint8_t last_ = 0;
    int scans_ = 0;
};

/// Presents a byte source to libvips. Not as a file, which libvips would map into memory: reading a mapped file that
/// was cut short ends the process.
class Input {
public:
    /// Ends after `mostBytes` that were read.
    explicit Input(const ByteSource& bytes, std::int64_t mostBytes = std::numeric_limits<std::int64_t>::max())
        : bytes_(bytes), bytesLeft_(mostBytes), scans_(bytes), source_(vips_source_custom_new()) {
        g_signal_connect(source_.get(), "read", G_CALLBACK(read), this);
        g_signal_connect(source_.get(), "seek", G_CALLBACK(seek), this);
        position_.store(0);
    }
    /// Whatever still refers to the source reads nothing from here on.
    ~Input() {
        g_signal_handlers_disconnect_by_data(source_.get(), this);
        position_.load();
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    VipsSource* source() const { return VIPS_SOURCE(source_.get()); }
    bool isOfKnownFormat() const {
        const char* const loader = vips_foreign_find_load_source(source());
        return loader != nullptr && std::ranges::find(kLoaders, loader) != kLoaders.end();
    }

private:
    static gint64 read(VipsSourceCustom* /*source*/, void* buffer, gint64 length, void* input) {
        Input& self = *static_cast<Input*>(input);
        const gint64 position = self.position_.load();
        const gint64 most = self.scans_.tooMany() ? 0 : std::min(length, self.bytesLeft_);
        const std::span room(static_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(std::max(most, gint64{0})));
        const std::size_t count = self.bytes_.read(position, room);
        self.scans_.pass(position, room.first(count));
        self.bytesLeft_ -= static_cast<gint64>(count);
        self.position_.store(position + static_cast<gint64>(count));
        return static_cast<gint64>(count);
    }

    static gint64 seek(VipsSourceCustom* /*source*/, gint64 offset, int whence, void* input) {
        Input& self = *static_cast<Input*>(input);
        const gint64 position = self.position_.load();
        const gint64 base = whence == SEEK_CUR ? position : whence == SEEK_END ? self.bytes_.size() : 0;
        gint64 target = 0;
        if (__builtin_add_overflow(base, offset, &target) || target < 0) return -1;
        self.position_.store(target);
        return target;
    }

    const ByteSource& bytes_;
    std::int64_t bytesLeft_;
    ScanCounter scans_;
    // libvips reads from one thread after the other. Stored last, loaded first: so each sees what the others did.
    std::atomic<gint64> position_{0};
    std::unique_ptr<VipsSourceCustom, Unreferenced> source_;
};

/// libvips gathers the texts of its errors for the whole process; ours are told by what is returned.
class ForgottenErrors {
public:
    ForgottenErrors() = default;
    ~ForgottenErrors() { vips_error_clear(); }
    ForgottenErrors(const ForgottenErrors&) = delete;
    ForgottenErrors& operator=(const ForgottenErrors&) = delete;
};

/// Null when the bytes are not of a known format. The image lives no longer than the input.
ImageReference openedImage(const Input& input) {
    if (!input.isOfKnownFormat()) return nullptr;
    return ImageReference(
        vips_image_new_from_source(input.source(), "", "access", VIPS_ACCESS_SEQUENTIAL, static_cast<void*>(nullptr)));
}

Raster uprightExtent(VipsImage* image) {
    const int width = vips_image_get_width(image);
    const int height = vips_image_get_height(image);
    return vips_image_get_orientation_swap(image) != FALSE ? Raster{height, width} : Raster{width, height};
}

/// Whether the image takes memory as its number of pixels lets expect, and has no more of them than `mostPixels`.
bool isOfBoundedSize(VipsImage* image, std::int64_t mostPixels) {
    return uprightExtent(image).holdsAtMost(mostPixels) && vips_image_get_bands(image) <= kMostChannels &&
           VIPS_IMAGE_SIZEOF_PEL(image) <= kMostBytesOfPixel;
}

/// The image in sRGB with 8 bits, with one to four channels; null on failure.
ImageReference inDisplayColours(ImageReference image) {
    const VipsInterpretation now = vips_image_get_interpretation(image.get());
    const bool known = now == VIPS_INTERPRETATION_sRGB || now == VIPS_INTERPRETATION_B_W;
    if (known && vips_image_get_format(image.get()) == VIPS_FORMAT_UCHAR) return image;
    VipsImage* converted = nullptr;
    if (vips_colourspace(image.get(), &converted, VIPS_INTERPRETATION_sRGB, static_cast<void*>(nullptr)) != 0) {
        return nullptr;
    }
    const ImageReference colours(converted);
    VipsImage* bytes = nullptr;
    if (vips_cast_uchar(colours.get(), &bytes, static_cast<void*>(nullptr)) != 0) return nullptr;
    return ImageReference(bytes);
}

/// One row of pixels of `channels` bytes (grey, grey and opacity, colours, colours and opacity, more) as RGBA.
void expandRow(const VipsPel* from, int channels, int width, std::uint8_t* to) {
    const bool coloured = channels >= 3;
    const int opacity = coloured ? 3 : 1;
    for (int x = 0; x < width; ++x, from += channels, to += 4) {
        to[0] = from[0];
        to[1] = from[coloured ? 1 : 0];
        to[2] = from[coloured ? 2 : 0];
        to[3] = channels > opacity ? from[opacity] : 255;
    }
}

/// Where the rows of an image go. libvips hands them over from the top down, on a thread of its own.
struct Rows {
    Pixels& pixels;
    std::atomic<int> count{0};  // stored last, loaded first: so each thread sees what the others wrote
};

int takeRows(VipsRegion* region, VipsRect* area, void* data) {
    Rows& rows = *static_cast<Rows*>(data);
    const int end = area->top + area->height;
    for (int y = rows.count.load(); y < end; ++y) {
        std::uint8_t* const to = rows.pixels.rgba.data() + 4 * std::size_t(area->width) * std::size_t(y);
        expandRow(VIPS_REGION_ADDR(region, 0, y), region->im->Bands, area->width, to);
    }
    rows.count.store(end);
    return 0;
}

bool fetchRows(VipsImage* image, Pixels& pixels) {
    Rows rows{.pixels = pixels};
    rows.count.store(0);
    return vips_sink_disc(image, takeRows, &rows) == 0 && rows.count.load() == pixels.height;
}

std::optional<Pixels> pixelsOf(ImageReference image, Raster raster) {
    image = inDisplayColours(std::move(image));
    if (image == nullptr || Raster{image->Xsize, image->Ysize} != raster) return std::nullopt;
    Pixels pixels{.width = raster.width, .height = raster.height, .rgba = {}};
    pixels.rgba.resize(4 * std::size_t(raster.width) * std::size_t(raster.height));
    if (!fetchRows(image.get(), pixels)) return std::nullopt;
    return pixels;
}

/// The pixels of `opened`, upright and scaled; the file is decoded no finer than the raster needs.
ImageReference scaledImage(const Input& input, VipsImage* opened, Raster raster) {
    const bool hasProfile = vips_image_get_typeof(opened, VIPS_META_ICC_NAME) != 0;
    VipsImage* scaled = nullptr;
    const int failed =
        hasProfile ? vips_thumbnail_source(input.source(), &scaled, raster.width, "height", raster.height, "size",
                                           VIPS_SIZE_FORCE, "export_profile", "srgb", static_cast<void*>(nullptr))
                   : vips_thumbnail_source(input.source(), &scaled, raster.width, "height", raster.height, "size",
                                           VIPS_SIZE_FORCE, static_cast<void*>(nullptr));
    return ImageReference(failed != 0 ? nullptr : scaled);
}

/// An image over bytes that must outlive it.
ImageReference imageOver(const std::vector<std::uint8_t>& bytes, Raster raster, int channels) {
    ImageReference image(vips_image_new_from_memory(bytes.data(), bytes.size(), raster.width, raster.height, channels,
                                                    VIPS_FORMAT_UCHAR));
    if (image != nullptr) image->Type = VIPS_INTERPRETATION_sRGB;
    return image;
}

std::uint8_t onWhite(std::uint8_t colour, std::uint8_t opacity) {
    return static_cast<std::uint8_t>((colour * opacity + 255 * (255 - opacity) + 127) / 255);
}

std::vector<std::uint8_t> coloursOnWhite(const Pixels& pixels) {
    std::vector<std::uint8_t> colours(pixels.rgba.size() / 4 * 3);
    auto to = colours.begin();
    for (auto from = pixels.rgba.begin(); to != colours.end(); from += 4) {
        for (int channel = 0; channel < 3; ++channel) *to++ = onWhite(from[channel], from[3]);
    }
    return colours;
}

bool isWhole(const Pixels& pixels) {
    return pixels.width > 0 && pixels.height > 0 &&
           pixels.rgba.size() == 4 * std::size_t(pixels.width) * std::size_t(pixels.height);
}

class VipsCodec final : public PictureCodec {
public:
    std::optional<Raster> extent(const ByteSource& bytes, std::int64_t mostPixels) const override {
        const ForgottenErrors errors;
        const Input input(bytes, kMostHeaderBytes);
        const ImageReference image = openedImage(input);
        if (image == nullptr || !isOfBoundedSize(image.get(), mostPixels)) return std::nullopt;
        return uprightExtent(image.get());
    }

    std::optional<Pixels> decode(const ByteSource& bytes, Raster raster, std::int64_t mostPixels) const override {
        const ForgottenErrors errors;
        const Input headerInput(bytes, kMostHeaderBytes);
        const ImageReference opened = openedImage(headerInput);
        if (opened == nullptr || !isOfBoundedSize(opened.get(), mostPixels)) return std::nullopt;
        const Input input(bytes);
        ImageReference image = scaledImage(input, opened.get(), raster);
        if (image == nullptr) return std::nullopt;
        return pixelsOf(std::move(image), raster);
    }

    std::optional<Pixels> scale(const Pixels& pixels, Raster raster) const override {
        const ForgottenErrors errors;
        if (!isWhole(pixels)) return std::nullopt;
        const ImageReference image = imageOver(pixels.rgba, {pixels.width, pixels.height}, 4);
        VipsImage* scaled = nullptr;
        if (image == nullptr || vips_thumbnail_image(image.get(), &scaled, raster.width, "height", raster.height,
                                                     "size", VIPS_SIZE_FORCE, static_cast<void*>(nullptr)) != 0) {
            return std::nullopt;
        }
        return pixelsOf(ImageReference(scaled), raster);
    }

    std::optional<std::vector<std::uint8_t>> jpeg(const Pixels& pixels, int quality) const override {
        const ForgottenErrors errors;
        if (!isWhole(pixels)) return std::nullopt;
        const std::vector<std::uint8_t> colours = coloursOnWhite(pixels);
        const ImageReference image = imageOver(colours, {pixels.width, pixels.height}, 3);
        void* file = nullptr;
        std::size_t size = 0;
        if (image == nullptr || vips_jpegsave_buffer(image.get(), &file, &size, "Q", quality, "strip", TRUE,
                                                     static_cast<void*>(nullptr)) != 0) {
            return std::nullopt;
        }
        const std::unique_ptr<void, decltype(&g_free)> owner(file, g_free);
        const auto* const first = static_cast<const std::uint8_t*>(file);
        return std::vector(first, first + size);
    }
};

void ignoreMessage(const char* /*domain*/, GLogLevelFlags /*level*/, const char* /*message*/, void* /*data*/) {}

/// Starts libvips. Its settings are those of the process: they are touched only when the host does not use libvips.
bool startLibrary() {
    const bool hostUsesIt = g_type_from_name("VipsObject") != 0;
    if (!hostUsesIt) {
        constexpr auto kMessages = GLogLevelFlags(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG);
        g_log_set_handler("VIPS", kMessages, ignoreMessage, nullptr);  // nothing to tell the host's users
    }
    if (VIPS_INIT("zkmobilebackup") != 0) return false;
    if (!hostUsesIt) vips_cache_set_max(0);  // no picture is decoded twice in the same way
    return true;
}

}  // namespace

}  // namespace ZkMobileBackup

/// The codec; null when libvips cannot be started. Called once.
extern "C" __attribute__((visibility("default"))) const ZkMobileBackup::PictureCodec* zkmbPictureCodec() {
    // Never destroyed: jobs may still look at pictures while the process ends.
    static const auto& codec = *new ZkMobileBackup::VipsCodec;
    return ZkMobileBackup::startLibrary() ? &codec : nullptr;
}
