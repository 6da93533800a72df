#include "platform/Movies.h"

#include <new>
#include <optional>
#include <utility>

#include "base/Image.h"
#include "platform/ByteSources.h"
#include "platform/codecs/MovieCodec.h"
#include "platform/codecs/modules.h"
#include "platform/movie_header.h"

namespace ZkMobileBackup {

namespace {

/// The picture of a movie that is shown first.
class PosterImage final : public Image {
public:
    PosterImage(std::string path, Raster extent) : path_(std::move(path)), extent_(extent) {}
    Size size() const override { return {double(extent_.width), double(extent_.height)}; }
    std::optional<Pixels> pixels() const override;

private:
    std::string path_;
    Raster extent_;
};

std::optional<Pixels> PosterImage::pixels() const {
    const MovieCodec* const codec = movieCodec();
    if (codec == nullptr) return std::nullopt;
    try {
        return codec->poster(FileBytes(path_), extent_, Image::mostPixels());
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

class MovieOfFile final : public Movie {
public:
    MovieOfFile(MovieHeader length, std::shared_ptr<const Image> poster)
        : length_(length), poster_(std::move(poster)) {}
    std::int64_t duration() const override { return length_.duration; }
    std::int64_t timeScale() const override { return length_.timeScale; }
    std::shared_ptr<const Image> posterImage() const override { return poster_; }

private:
    MovieHeader length_;
    std::shared_ptr<const Image> poster_;  // may be null
};

std::optional<MovieFacts> factsOf(const ByteSource& bytes) {
    const MovieCodec* const codec = bytes.size() > 0 ? movieCodec() : nullptr;
    if (codec == nullptr) return std::nullopt;
    try {
        return codec->facts(bytes, Image::mostPixels());
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

}  // namespace

std::shared_ptr<const Movie> movieOfFile(const std::string& path) {
    const FileBytes bytes(path);
    const std::optional<MovieFacts> facts = factsOf(bytes);
    if (!facts) return nullptr;
    const MovieHeader containers{.duration = facts->duration, .timeScale = facts->timeScale};
    auto poster = facts->shown ? std::make_shared<const PosterImage>(path, *facts->shown) : nullptr;
    return std::make_shared<const MovieOfFile>(readMovieHeader(bytes).value_or(containers), std::move(poster));
}

}  // namespace ZkMobileBackup
