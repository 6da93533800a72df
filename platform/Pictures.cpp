#include "platform/Pictures.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "platform/ByteSources.h"
#include "platform/bitmap16.h"
#include "platform/codecs/PictureCodec.h"
#include "platform/codecs/modules.h"

namespace ZkMobileBackup {

namespace {

using SharedImage = std::shared_ptr<const Image>;

/// Nothing where a picture needs more memory than there is.
template <typename Action>
auto unlessMemoryRunsOut(Action action) -> decltype(action()) {
    try {
        return action();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

/// A file that has more bytes than the largest picture's pixels is not opened: those of some formats are held in memory
/// as a whole.
constexpr std::int64_t kMostBytesOfPixel = 8;

bool isSmallEnough(const ByteSource& bytes) {
    return bytes.size() > 0 && bytes.size() / kMostBytesOfPixel <= Image::mostPixels();
}

std::optional<Raster> extentOf(const ByteSource& bytes) {
    if (!isSmallEnough(bytes)) return std::nullopt;
    const PictureCodec* const codec = pictureCodec();
    if (codec == nullptr) return std::nullopt;
    return unlessMemoryRunsOut([&] { return codec->extent(bytes, Image::mostPixels()); });
}

std::optional<Pixels> decoded(const ByteSource& bytes, Raster raster) {
    if (!isSmallEnough(bytes)) return std::nullopt;
    const PictureCodec* const codec = pictureCodec();
    if (codec == nullptr) return std::nullopt;
    return unlessMemoryRunsOut([&] { return codec->decode(bytes, raster, Image::mostPixels()); });
}

/// A picture that is decoded in any raster at once.
class EncodedPicture : public Image {
public:
    Size size() const override { return {double(extent_.width), double(extent_.height)}; }
    std::optional<Pixels> pixels() const override { return pixelsIn(extent_); }
    virtual std::optional<Pixels> pixelsIn(Raster raster) const = 0;

protected:
    explicit EncodedPicture(Raster extent) : extent_(extent) {}

private:
    Raster extent_;
};

class PictureOfFile final : public EncodedPicture {
public:
    PictureOfFile(std::string path, Raster extent) : EncodedPicture(extent), path_(std::move(path)) {}
    std::optional<Pixels> pixelsIn(Raster raster) const override { return decoded(FileBytes(path_), raster); }

private:
    std::string path_;
};

class PictureOfBytes final : public EncodedPicture {
public:
    PictureOfBytes(SharedBytes bytes, Raster extent) : EncodedPicture(extent), bytes_(std::move(bytes)) {}
    std::optional<Pixels> pixelsIn(Raster raster) const override { return decoded(HeldBytes(bytes_), raster); }

private:
    SharedBytes bytes_;
};

class Bitmap16Picture final : public Image {
public:
    explicit Bitmap16Picture(SharedBytes bytes) : bytes_(std::move(bytes)) {}
    Size size() const override {
        const Raster extent = *bitmap16Extent(*bytes_);
        return {double(extent.width), double(extent.height)};
    }
    std::optional<Pixels> pixels() const override {
        return unlessMemoryRunsOut([this] { return std::optional(bitmap16Pixels(*bytes_)); });
    }

private:
    SharedBytes bytes_;  // a bitmap
};

class Bitmap16OfFile final : public Image {
public:
    Bitmap16OfFile(std::span<const std::uint8_t> header, const std::string& path, std::int64_t position)
        : path_(path), position_(position) {
        std::ranges::copy(header.first(header_.size()), header_.begin());
    }
    Size size() const override {
        const Raster extent = *bitmap16Announced(header_);
        return {double(extent.width), double(extent.height)};
    }
    std::optional<Pixels> pixels() const override {
        return unlessMemoryRunsOut([this] {
            const std::vector<std::uint8_t> bitmap = bitmapAsFarAsItStands();
            return bitmap16Extent(bitmap) ? std::optional(bitmap16Pixels(bitmap)) : std::nullopt;
        });
    }

private:
    std::vector<std::uint8_t> bitmapAsFarAsItStands() const {
        std::vector<std::uint8_t> bitmap(header_.begin(), header_.end());
        bitmap.resize(bitmap16Size(*bitmap16Announced(header_)));
        const std::size_t count = FileBytes(path_).read(position_, std::span(bitmap).subspan(header_.size()));
        bitmap.resize(header_.size() + count);
        return bitmap;
    }

    const std::string path_;
    const std::int64_t position_;
    std::array<std::uint8_t, kBitmap16HeaderSize> header_{};  // announces an extent
};

class ScaledPicture final : public Image {
public:
    ScaledPicture(SharedImage original, Size size) : original_(std::move(original)), size_(size) {}
    Size size() const override { return size_; }
    std::optional<Pixels> pixels() const override;
    const SharedImage& original() const { return original_; }

private:
    SharedImage original_;  // not scaled itself
    Size size_;
};

std::optional<Pixels> scaledPixels(const Image& picture, Raster raster) {
    const std::optional<Pixels> all = picture.pixels();
    const PictureCodec* const codec = all ? pictureCodec() : nullptr;
    if (codec == nullptr) return std::nullopt;
    return unlessMemoryRunsOut([&] { return codec->scale(*all, raster); });
}

std::optional<Pixels> ScaledPicture::pixels() const {
    const Raster raster{width(), height()};
    const auto* const encoded = dynamic_cast<const EncodedPicture*>(original_.get());
    return encoded != nullptr ? encoded->pixelsIn(raster) : scaledPixels(*original_, raster);
}

/// A handle, made unless memory runs out.
template <typename Picture, typename... Arguments>
SharedImage made(Arguments&&... arguments) {
    return unlessMemoryRunsOut(
        [&]() -> SharedImage { return std::make_shared<const Picture>(std::forward<Arguments>(arguments)...); });
}

}  // namespace

std::shared_ptr<const Image> pictureOfFile(const std::string& path) {
    const std::optional<Raster> extent = extentOf(FileBytes(path));
    return extent ? made<PictureOfFile>(path, *extent) : nullptr;
}

std::shared_ptr<const Image> pictureOfBytes(SharedBytes bytes) {
    if (bytes == nullptr) return nullptr;
    if (const std::optional<Raster> extent = bitmap16Extent(*bytes)) {
        return extent->holdsAtMost(Image::mostPixels()) ? made<Bitmap16Picture>(std::move(bytes)) : nullptr;
    }
    const std::optional<Raster> extent = extentOf(HeldBytes(bytes));
    return extent ? made<PictureOfBytes>(std::move(bytes), *extent) : nullptr;
}

std::shared_ptr<const Image> pictureOfBitmap16(std::span<const std::uint8_t> header, const std::string& path,
                                               std::int64_t position) {
    const std::optional<Raster> extent = bitmap16Announced(header);
    if (!extent || !extent->holdsAtMost(Image::mostPixels())) return nullptr;
    return made<Bitmap16OfFile>(header, path, position);
}

std::shared_ptr<const Image> scaledPicture(std::shared_ptr<const Image> picture, double factor) {
    if (picture == nullptr || !(factor > 0)) return nullptr;
    const Size size{picture->size().width * factor, picture->size().height * factor};
    if (!(size.width > 0 && size.height > 0)) return nullptr;
    if (!(std::max(size.width, 1.0) * std::max(size.height, 1.0) <= double(Image::mostPixels()))) return nullptr;
    if (const auto* const scaled = dynamic_cast<const ScaledPicture*>(picture.get())) {
        return made<ScaledPicture>(scaled->original(), size);
    }
    return made<ScaledPicture>(std::move(picture), size);
}

std::optional<std::vector<std::uint8_t>> jpegOfPicture(const Image& picture, int quality) {
    const std::optional<Pixels> pixels = picture.pixels();
    const PictureCodec* const codec = pixels ? pictureCodec() : nullptr;
    if (codec == nullptr) return std::nullopt;
    return unlessMemoryRunsOut([&] { return codec->jpeg(*pixels, quality); });
}

}  // namespace ZkMobileBackup
