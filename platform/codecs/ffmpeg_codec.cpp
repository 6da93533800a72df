// The movie codec over FFmpeg, in a module of its own. Everything runs on the calling thread.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/log.h>
#include <libavutil/mathematics.h>
#include <libavutil/mem.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "platform/codecs/MovieCodec.h"

namespace ZkMobileBackup {

namespace {

/// FFmpeg reads more: lists of other files, still pictures, texts.
constexpr const char* kContainers = "mov,mp4,matroska,webm,avi,mpeg,mpegts,flv,asf,dv";
/// No decoder has this name, so none is started while a container is opened: it would not know how many pixels a frame
/// may have.
constexpr const char* kNoDecoder = "none";

// A damaged or hostile file ends after so much work.
constexpr std::int64_t kMostBytesRead = std::int64_t{256} << 20;
constexpr int kMostPacketsToFirstFrame = 2000;
constexpr std::int64_t kMostPixelsToFirstFrame = 4'000'000'000;

/// The largest piece of memory that FFmpeg may have: holds the index of a day of film, and the largest frame.
constexpr std::size_t kLargestPiece = std::size_t{128} << 20;
constexpr std::int64_t kMostPixelsOfFrame = kLargestPiece / 4 - 64 * 1024;  // and what FFmpeg adds to its rows

template <auto Free>
struct FreedBy {
    template <typename Object>
    void operator()(Object* object) const {
        Free(&object);
    }
};
using Decoder = std::unique_ptr<AVCodecContext, FreedBy<avcodec_free_context>>;
using Frame = std::unique_ptr<AVFrame, FreedBy<av_frame_free>>;
using Packet = std::unique_ptr<AVPacket, FreedBy<av_packet_free>>;

template <typename Owner>
Owner orNoMemory(Owner owner) {
    if (owner == nullptr) throw std::bad_alloc();
    return owner;
}

/// Settings of FFmpeg are those of the whole process. While one of these lives, nothing is logged, since the log goes
/// to standard error, and no piece of memory is larger than a bound, since a file of a few bytes may announce tables of
/// any length. Afterwards the log is what the host made of it; a bound of the host's own cannot be asked for and ends.
class ProcessSettings {
public:
    ProcessSettings() {
        const std::lock_guard lock(mutex_);
        if (users_++ > 0) return;
        logLevelBefore_ = av_log_get_level();
        av_log_set_level(AV_LOG_QUIET);
        av_max_alloc(kLargestPiece);
    }
    ~ProcessSettings() {
        const std::lock_guard lock(mutex_);
        if (--users_ > 0) return;
        av_log_set_level(logLevelBefore_);
        av_max_alloc(kDefaultLargestPiece);
    }
    ProcessSettings(const ProcessSettings&) = delete;
    ProcessSettings& operator=(const ProcessSettings&) = delete;

private:
    static constexpr std::size_t kDefaultLargestPiece = std::numeric_limits<int>::max();

    static inline std::mutex mutex_;
    // Guarded by mutex_:
    static inline int users_ = 0;
    static inline int logLevelBefore_ = 0;
};

/// Presents a byte source to FFmpeg.
class Input {
public:
    explicit Input(const ByteSource& bytes) : bytes_(bytes) {
        constexpr int kBufferSize = 64 << 10;
        auto* const buffer = orNoMemory(static_cast<unsigned char*>(av_malloc(kBufferSize)));
        context_ = avio_alloc_context(buffer, kBufferSize, 0, this, read, nullptr, seek);
        if (context_ != nullptr) return;
        av_free(buffer);
        throw std::bad_alloc();
    }
    ~Input() {
        av_freep(static_cast<void*>(&context_->buffer));
        avio_context_free(&context_);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    AVIOContext* context() const { return context_; }

private:
    static int read(void* input, std::uint8_t* buffer, int size) {
        Input& self = *static_cast<Input*>(input);
        const std::int64_t length = std::min(std::int64_t{size}, self.bytesLeft_);
        if (length <= 0) return AVERROR_EOF;
        const std::size_t count = self.bytes_.read(self.position_, {buffer, static_cast<std::size_t>(length)});
        self.position_ += static_cast<std::int64_t>(count);
        self.bytesLeft_ -= static_cast<std::int64_t>(count);
        return count == 0 ? AVERROR_EOF : static_cast<int>(count);
    }

    static std::int64_t seek(void* input, std::int64_t offset, int whence) {
        Input& self = *static_cast<Input*>(input);
        if ((whence & AVSEEK_SIZE) != 0) return self.bytes_.size();
        const int from = whence & ~AVSEEK_FORCE;
        const std::int64_t base = from == SEEK_CUR ? self.position_ : from == SEEK_END ? self.bytes_.size() : 0;
        std::int64_t target = 0;
        if (__builtin_add_overflow(base, offset, &target) || target < 0) return AVERROR(EINVAL);
        return self.position_ = target;
    }

    const ByteSource& bytes_;
    std::int64_t position_ = 0;
    std::int64_t bytesLeft_ = kMostBytesRead;
    AVIOContext* context_ = nullptr;
};

/// A file names others in some formats; none is opened.
int refuseToOpen(AVFormatContext* /*container*/, AVIOContext** /*io*/, const char* /*url*/, int /*flags*/,
                 AVDictionary** /*options*/) {
    return AVERROR(EPERM);
}

/// A movie's container, opened.
class Container {
public:
    explicit Container(const ByteSource& bytes) : input_(bytes) {}
    ~Container() { avformat_close_input(&context_); }
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    bool open();
    AVFormatContext* context() const { return context_; }
    std::span<AVStream* const> streams() const { return {context_->streams, context_->nb_streams}; }
    /// The stream of pictures that is shown; null without one. Pictures that go with a piece of music are none.
    AVStream* shownStream() const;

private:
    ProcessSettings settings_;
    Input input_;
    AVFormatContext* context_ = nullptr;
};

bool Container::open() {
    context_ = orNoMemory(avformat_alloc_context());
    context_->pb = input_.context();
    context_->flags |= AVFMT_FLAG_CUSTOM_IO;
    context_->io_open = refuseToOpen;
    context_->fps_probe_size = 0;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", kContainers, 0);
    av_dict_set(&options, "codec_whitelist", kNoDecoder, 0);
    const int opened = avformat_open_input(&context_, "", nullptr, &options);  // sets the context to null if it fails
    av_dict_free(&options);
    return opened == 0 && avformat_find_stream_info(context_, nullptr) >= 0;
}

AVStream* Container::shownStream() const {
    AVStream* chosen = nullptr;
    for (AVStream* const stream : streams()) {
        constexpr int kStillPicture = AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS;
        if (stream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO) continue;
        if ((stream->disposition & kStillPicture) != 0) continue;
        const auto isDefault = [](const AVStream* which) { return which->disposition & AV_DISPOSITION_DEFAULT; };
        if (chosen == nullptr || isDefault(stream) > isDefault(chosen)) chosen = stream;
    }
    return chosen;
}

bool hasSound(const Container& container) {
    return std::ranges::any_of(container.streams(), [](const AVStream* stream) {
        const AVCodecParameters& parameters = *stream->codecpar;
        return parameters.codec_type == AVMEDIA_TYPE_AUDIO && parameters.codec_id != AV_CODEC_ID_NONE &&
               parameters.sample_rate > 0 && parameters.ch_layout.nb_channels > 0;
    });
}

/// A decoder for the stream; null when there is none.
Decoder startedDecoder(const AVStream& stream, std::int64_t mostPixels) {
    const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr) return nullptr;
    Decoder decoder = orNoMemory(Decoder(avcodec_alloc_context3(codec)));
    if (avcodec_parameters_to_context(decoder.get(), stream.codecpar) < 0) return nullptr;
    decoder->thread_count = 1;
    decoder->max_pixels = mostPixels;
    decoder->pkt_timebase = stream.time_base;
    return avcodec_open2(decoder.get(), codec, nullptr) == 0 ? std::move(decoder) : nullptr;
}

/// The frame that a decoder hands out next; null when it wants more packets or has no more frames.
Frame nextFrame(AVCodecContext& decoder) {
    Frame frame = orNoMemory(Frame(av_frame_alloc()));
    return avcodec_receive_frame(&decoder, frame.get()) == 0 ? std::move(frame) : nullptr;
}

/// The stream's frame that is shown first: decoders hand out frames in that order, without those that the movie leaves
/// out. Null when none can be decoded.
Frame firstFrame(const Container& container, const AVStream& shown, std::int64_t mostPixels) {
    const Decoder decoder = startedDecoder(shown, mostPixels);
    if (decoder == nullptr) return nullptr;
    for (AVStream* const stream : container.streams()) stream->discard = AVDISCARD_ALL;
    container.streams()[static_cast<std::size_t>(shown.index)]->discard = AVDISCARD_DEFAULT;
    const Packet packet = orNoMemory(Packet(av_packet_alloc()));
    std::int64_t pixels = 0;  // of frames that may have been decoded without being shown
    for (int count = 0; count < kMostPacketsToFirstFrame && pixels < kMostPixelsToFirstFrame; ++count) {
        if (av_read_frame(container.context(), packet.get()) < 0) break;
        pixels += std::int64_t{decoder->width} * decoder->height;
        if (packet->stream_index == shown.index) avcodec_send_packet(decoder.get(), packet.get());  // damaged: next one
        av_packet_unref(packet.get());
        if (Frame frame = nextFrame(*decoder)) return frame;
    }
    avcodec_send_packet(decoder.get(), nullptr);
    return nextFrame(*decoder);
}

/// How pictures are turned and mirrored for showing them.
struct Attitude {
    bool transposed = false;  ///< rows become columns; done first
    bool leftToRight = false;
    bool upsideDown = false;
};

/// Attitude of the stream's display matrix, which maps a point (p, q) to (a p + c q, b p + d q); the nearest one for a
/// matrix that turns by other angles than right ones.
Attitude attitudeOf(const AVStream& stream) {
    std::size_t size = 0;
    const std::uint8_t* const data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    std::array<std::int32_t, 9> matrix{};
    if (data == nullptr || size < sizeof matrix) return {};
    std::memcpy(matrix.data(), data, sizeof matrix);
    const std::int64_t a = matrix[0];
    const std::int64_t b = matrix[1];
    const std::int64_t c = matrix[3];
    const std::int64_t d = matrix[4];
    if (std::abs(b) + std::abs(c) > std::abs(a) + std::abs(d)) {
        return {.transposed = true, .leftToRight = c < 0, .upsideDown = b < 0};
    }
    return {.transposed = false, .leftToRight = a < 0, .upsideDown = d < 0};
}

Raster turned(Raster raster, Attitude attitude) {
    return attitude.transposed ? Raster{raster.height, raster.width} : raster;
}

/// Extent of a picture of square pixels with the shape of one of the stream's, which need not be square.
Raster shownExtent(const Container& container, AVStream& stream, Raster coded) {
    const AVRational pixel = av_guess_sample_aspect_ratio(container.context(), &stream, nullptr);
    if (pixel.num <= 0 || pixel.den <= 0) return coded;
    const std::int64_t width = av_rescale(coded.width, pixel.num, pixel.den);
    constexpr std::int64_t kWidest = 1 << 30;
    return {static_cast<int>(std::clamp(width, std::int64_t{1}, kWidest)), coded.height};
}

/// Extent of the stream's pictures as they are stored, which some containers do not tell; empty when they cannot be
/// decoded.
Raster codedExtent(const Container& container, const AVStream& stream, std::int64_t mostPixels) {
    if (avcodec_find_decoder(stream.codecpar->codec_id) == nullptr) return {};
    const Raster announced{stream.codecpar->width, stream.codecpar->height};
    if (announced.width > 0 && announced.height > 0) return announced;
    const Frame frame = firstFrame(container, stream, mostPixels);
    return frame == nullptr ? Raster{} : Raster{frame->width, frame->height};
}

/// Extent in which pictures of that stored extent are shown, upright; nothing when they are too large.
std::optional<Raster> uprightExtent(const Container& container, AVStream& stream, Raster coded,
                                    std::int64_t mostPixels) {
    if (!coded.holdsAtMost(mostPixels)) return std::nullopt;
    const Raster shown = shownExtent(container, stream, coded);
    return shown.holdsAtMost(mostPixels) ? std::optional(turned(shown, attitudeOf(stream))) : std::nullopt;
}

/// The colour matrix of a frame that does not tell is that of high or standard definition television, as players guess.
int colourMatrix(const AVFrame& frame) {
    constexpr int kLinesOfHighDefinition = 720;
    if (frame.colorspace != AVCOL_SPC_UNSPECIFIED) return frame.colorspace;
    return std::max(frame.width, frame.height) > kLinesOfHighDefinition ? SWS_CS_ITU709 : SWS_CS_ITU601;
}

using Converter = std::unique_ptr<SwsContext, decltype(&sws_freeContext)>;

/// Converts frames like this one to RGBA of a raster; null when there is no way.
Converter converterFor(const AVFrame& frame, Raster raster) {
    const int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
    Converter converter(sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
                                       raster.width, raster.height, AV_PIX_FMT_RGBA, flags, nullptr, nullptr, nullptr),
                        sws_freeContext);
    if (converter == nullptr) return converter;
    int* from = nullptr;
    int* to = nullptr;
    int fromFullRange = 0;
    int toFullRange = 0;
    int brightness = 0;
    int contrast = 0;
    int saturation = 0;
    // Fails for frames that are no YUV, which need none of it.
    if (sws_getColorspaceDetails(converter.get(), &from, &fromFullRange, &to, &toFullRange, &brightness, &contrast,
                                 &saturation) >= 0) {
        if (frame.color_range == AVCOL_RANGE_JPEG) fromFullRange = 1;
        sws_setColorspaceDetails(converter.get(), sws_getCoefficients(colourMatrix(frame)), fromFullRange, to,
                                 toFullRange, brightness, contrast, saturation);
    }
    return converter;
}

/// The frame's pixels in RGBA, scaled to a raster; null when it cannot be converted.
Frame converted(const AVFrame& frame, Raster raster) {
    const Converter converter = converterFor(frame, raster);
    if (converter == nullptr) return nullptr;
    Frame result = orNoMemory(Frame(av_frame_alloc()));
    result->format = AV_PIX_FMT_RGBA;
    result->width = raster.width;
    result->height = raster.height;
    if (av_frame_get_buffer(result.get(), 0) < 0) throw std::bad_alloc();
    const int rows =
        sws_scale(converter.get(), frame.data, frame.linesize, 0, frame.height, result->data, result->linesize);
    return rows == raster.height ? std::move(result) : nullptr;
}

/// The RGBA frame as it is to be shown.
Pixels uprightPixels(const AVFrame& frame, Attitude attitude) {
    const auto [width, height] = turned({frame.width, frame.height}, attitude);
    Pixels pixels{.width = width, .height = height, .rgba = {}};
    pixels.rgba.resize(4 * std::size_t(width) * std::size_t(height));
    std::uint8_t* to = pixels.rgba.data();
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column, to += 4) {
            const int across = attitude.leftToRight ? width - 1 - column : column;
            const int down = attitude.upsideDown ? height - 1 - row : row;
            const int x = attitude.transposed ? down : across;
            const int y = attitude.transposed ? across : down;
            std::memcpy(to, frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0] + std::ptrdiff_t{x} * 4, 4);
        }
    }
    return pixels;
}

class FfmpegCodec final : public MovieCodec {
public:
    std::optional<MovieFacts> facts(const ByteSource& bytes, std::int64_t mostPixels) const override {
        Container container(bytes);
        if (!container.open()) return std::nullopt;
        AVStream* const stream = container.shownStream();
        mostPixels = std::min(mostPixels, kMostPixelsOfFrame);
        const Raster coded = stream == nullptr ? Raster{} : codedExtent(container, *stream, mostPixels);
        if (coded == Raster{} && !hasSound(container)) return std::nullopt;
        MovieFacts facts;
        if (stream != nullptr) facts.shown = uprightExtent(container, *stream, coded, mostPixels);
        facts.timeScale = AV_TIME_BASE;
        facts.duration = std::max(container.context()->duration, std::int64_t{0});  // below 0 when unknown
        return facts;
    }

    std::optional<Pixels> poster(const ByteSource& bytes, Raster raster, std::int64_t mostPixels) const override {
        Container container(bytes);
        AVStream* const stream = container.open() ? container.shownStream() : nullptr;
        if (stream == nullptr) return std::nullopt;
        const Frame frame = firstFrame(container, *stream, mostPixels);
        if (frame == nullptr) return std::nullopt;
        const Attitude attitude = attitudeOf(*stream);
        const Frame shown = converted(*frame, turned(raster, attitude));
        return shown == nullptr ? std::nullopt : std::optional(uprightPixels(*shown, attitude));
    }
};

}  // namespace

}  // namespace ZkMobileBackup

/// The codec. Called once.
extern "C" __attribute__((visibility("default"))) const ZkMobileBackup::MovieCodec* zkmbMovieCodec() {
    // Never destroyed: jobs may still look at pictures while the process ends.
    static const auto& codec = *new ZkMobileBackup::FfmpegCodec;
    return &codec;
}
