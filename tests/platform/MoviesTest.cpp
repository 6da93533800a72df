#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

#include "base/Image.h"
#include "platform/Movies.h"
#include "platform/Pictures.h"
#include "tests/platform/PictureTesting.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/CommandRun.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Colours of a movie are stored for every second pixel, so that edges and digits are blurred.
constexpr double kMovieAlike = 12;

constexpr std::int64_t kMicroseconds = 1'000'000;

/// Where a text begins in a movie that has it.
std::size_t placeOf(std::string_view text, const Bytes& movie) {
    return static_cast<std::size_t>(std::search(movie.begin(), movie.end(), text.begin(), text.end()) - movie.begin());
}

class Movies : public testing::Test {
protected:
    ~Movies() override { Image::setMostPixels(Image::kMostPixels); }

    std::string file(const Bytes& bytes) const {
        writeBytes(folder_.path("movie"), bytes);
        return folder_.path("movie");
    }
    std::shared_ptr<const Movie> movie(const Bytes& bytes) const { return movieOfFile(file(bytes)); }

    /// The movie, written anew by ffmpeg with further arguments into a file of that extension.
    std::shared_ptr<const Movie> rewritten(const Bytes& bytes, const std::string& arguments,
                                           const std::string& extension = "mov",
                                           const std::string& inputArguments = "") const {
        const std::string path = folder_.path("rewritten." + extension);
        const CommandRun run = runCommand("ffmpeg -nostdin -loglevel error -y " + inputArguments + " -i '" +
                                          file(bytes) + "' " + arguments + " '" + path + "' 2>&1");
        if (run.status != 0) throw std::runtime_error(run.output);
        return movieOfFile(path);
    }

    const TemporaryFolder folder_;
};

void expectPoster(const std::shared_ptr<const Movie>& movie, const Canvas& canvas, const std::string& what = "") {
    ASSERT_NE(movie, nullptr) << what;
    ASSERT_NE(movie->posterImage(), nullptr) << what;
    EXPECT_EQ(movie->posterImage()->size(), (Size{double(canvas.width), double(canvas.height)})) << what;
    const auto pixels = movie->posterImage()->pixels();
    ASSERT_TRUE(pixels) << what;
    EXPECT_LT(difference(*pixels, canvas), kMovieAlike) << what;
}

TEST_F(Movies, DurationIsTheMovieHeadersInItsOwnTimeScale) {
    const auto known = movie(movieFile({.frames = 20, .timeScale = 600}));
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->duration(), 400);
    EXPECT_EQ(known->timeScale(), 600);
}

TEST_F(Movies, DurationOfALongHeaderIsReadToo) {
    const auto known = movie(movieFile({.frames = 20, .timeScale = 90'000, .mp4 = true, .longTimes = true}));
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->duration(), 60'000);
    EXPECT_EQ(known->timeScale(), 90'000);
}

TEST_F(Movies, WithoutAMovieHeaderTheContainersDurationCounts) {
    const Bytes bytes = movieFile({.frames = 30});
    for (const std::string extension : {"mkv", "avi", "ts"}) {
        const auto known = rewritten(bytes, "-c:v mpeg4", extension);
        ASSERT_NE(known, nullptr) << extension;
        EXPECT_EQ(known->duration(), kMicroseconds) << extension;
        EXPECT_EQ(known->timeScale(), kMicroseconds) << extension;
    }
}

TEST_F(Movies, PosterIsTheFirstFrame) {
    expectPoster(movie(movieFile({.width = 160, .height = 120})), numberedQuadrants(160, 120, 1));
}

TEST_F(Movies, PosterIsUpright) {
    for (const int rotation : {90, 180, 270}) {
        expectPoster(movie(movieFile({.width = 160, .height = 100, .rotation = rotation})),
                     numberedQuadrants(160, 100, 1), std::to_string(rotation));
    }
}

/// Sets the four numbers of the first track's display matrix that turn and mirror: (p, q) is shown at
/// (a p + c q, b p + d q).
Bytes withMatrix(Bytes movie, int a, int b, int c, int d) {
    constexpr std::size_t kMatrix = 4 + 40;  // from the box's name on
    auto at = movie.begin() + static_cast<std::ptrdiff_t>(placeOf("tkhd", movie) + kMatrix);
    for (const int number : {a, b, 0, c, d}) {
        const Bytes bytes = ByteBuilder().u32(static_cast<std::uint32_t>(number) << 16U).bytes();
        at = std::ranges::copy(bytes, at).out;
    }
    return movie;
}

TEST_F(Movies, PosterIsMirroredAsTheMatrixSays) {
    const Bytes bytes = movieFile({.width = 160, .height = 100});
    const Canvas stored = numberedQuadrants(160, 100, 1);
    // The stored picture has EXIF orientation 2, 4, 5 and 7 of what is shown; the first two and the others are their
    // own inverse.
    expectPoster(movie(withMatrix(bytes, -1, 0, 0, 1)), storedWithOrientation(stored, 2), "left to right");
    expectPoster(movie(withMatrix(bytes, 1, 0, 0, -1)), storedWithOrientation(stored, 4), "upside down");
    expectPoster(movie(withMatrix(bytes, 0, 1, 1, 0)), storedWithOrientation(stored, 5), "transposed");
    expectPoster(movie(withMatrix(bytes, 0, -1, -1, 0)), storedWithOrientation(stored, 7), "transposed otherwise");
    expectPoster(movie(withMatrix(bytes, 0, 0, 0, 0)), stored, "empty matrix");
}

TEST_F(Movies, PosterFollowsTheEditList) {
    // Cut in the middle of what is coded together: the file keeps all frames and says which is shown first.
    const auto cut = rewritten(movieFile({.frames = 15}), "-c copy", "mov", "-ss 0.2");
    ASSERT_EQ(cut->duration(), 300);
    expectPoster(cut, numberedQuadrants(160, 120, 2));
}

TEST_F(Movies, PosterIsFirstInTheOrderOfShowing) {
    const auto reordered = rewritten(movieFile({.frames = 15}), "-c:v libx264 -bf 3 -preset medium");
    expectPoster(reordered, numberedQuadrants(160, 120, 1));
}

TEST_F(Movies, PosterHasTheShapeThatIsShown) {
    const Bytes bytes = movieFile({.width = 160, .height = 120});
    expectPoster(rewritten(bytes, "-vf setsar=2/1"), numberedQuadrants(320, 120, 1));
    expectPoster(movie(withMatrix(readBytes(folder_.path("rewritten.mov")), 0, 1, -1, 0)),
                 storedWithOrientation(numberedQuadrants(320, 120, 1), 8), "turned as well");
}

TEST_F(Movies, OtherContainersHaveAPosterToo) {
    const Bytes bytes = movieFile();
    for (const std::string extension : {"mp4", "mkv", "avi", "ts", "mpg", "flv", "asf"}) {
        expectPoster(rewritten(bytes, "", extension), numberedQuadrants(160, 120, 1), extension);
    }
}

TEST_F(Movies, PosterIsScaled) {
    const auto poster = movie(movieFile({.width = 160, .height = 120}))->posterImage();
    const auto half = scaledPicture(poster, 0.5);
    ASSERT_NE(half, nullptr);
    const auto pixels = half->pixels();
    ASSERT_TRUE(pixels);
    EXPECT_LT(difference(*pixels, numberedQuadrants(80, 60, 1)), kMovieAlike);
    EXPECT_TRUE(jpegOfPicture(*half, 90));
}

TEST_F(Movies, MovieWithoutPicturesHasNoPoster) {
    const auto sound = movie(movieFile({.picture = false, .sound = true}));
    ASSERT_NE(sound, nullptr);
    EXPECT_GT(sound->duration(), 0);
    EXPECT_EQ(sound->posterImage(), nullptr);
}

TEST_F(Movies, PictureThatGoesWithMusicIsNoPoster) {
    writeBytes(folder_.path("cover.jpg"), jpegFile(quadrants(64, 64)));
    const auto music =
        rewritten(movieFile({.picture = false, .sound = true}),
                  "-i '" + folder_.path("cover.jpg") + "' -map 0 -map 1 -c copy -disposition:v:0 attached_pic", "m4a");
    ASSERT_NE(music, nullptr);
    EXPECT_EQ(music->posterImage(), nullptr);
}

TEST_F(Movies, WhatIsNoMovieGivesNone) {
    EXPECT_EQ(movieOfFile(folder_.path("missing")), nullptr);
    EXPECT_EQ(movieOfFile(folder_.path()), nullptr);
    EXPECT_EQ(movie({}), nullptr);
    EXPECT_EQ(movie(Bytes(100'000, 0xA5)), nullptr);
    writeText(folder_.path("text"), "No movie but a text.\n");
    EXPECT_EQ(movieOfFile(folder_.path("text")), nullptr);
    ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(movieOfFile(folder_.path("pipe")), nullptr);
}

TEST_F(Movies, PicturesAndListsOfFilesAreNoMovies) {
    EXPECT_EQ(movie(jpegFile(quadrants(64, 64))), nullptr);
    EXPECT_EQ(movie(pngFile(quadrants(64, 64))), nullptr);
    writeBytes(folder_.path("real.mov"), movieFile());
    writeText(folder_.path("list"), "ffconcat version 1.0\nfile real.mov\n");
    EXPECT_EQ(movieOfFile(folder_.path("list")), nullptr);
    writeText(folder_.path("list.m3u8"), "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nreal.mov\n#EXT-X-ENDLIST\n");
    EXPECT_EQ(movieOfFile(folder_.path("list.m3u8")), nullptr);
}

TEST_F(Movies, TruncatedMoviesCrashNothingAndSayNothing) {
    const Bytes end = movieFile();
    const auto begin = rewritten(end, "-c copy -movflags +faststart");
    const Bytes start = readBytes(folder_.path("rewritten.mov"));
    testing::internal::CaptureStderr();
    for (const Bytes& whole : {start, end}) {
        for (std::size_t size = 0; size < whole.size(); size += whole.size() / 40) {
            const auto part = movie(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
            if (part != nullptr && part->posterImage() != nullptr) part->posterImage()->pixels();
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Movies, MovieWhoseFramesAreCutOffHasAPosterWithoutPixels) {
    const auto whole = rewritten(movieFile(), "-c copy -movflags +faststart");
    Bytes bytes = readBytes(folder_.path("rewritten.mov"));
    bytes.resize(placeOf("mdat", bytes) + 4);
    const auto cut = movie(bytes);
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(cut->duration(), whole->duration());
    ASSERT_NE(cut->posterImage(), nullptr);
    EXPECT_FALSE(cut->posterImage()->pixels());
}

TEST_F(Movies, FileThatDisappearsHasNoPosterPixels) {
    const auto known = movie(movieFile());
    std::filesystem::remove(folder_.path("movie"));
    EXPECT_FALSE(known->posterImage()->pixels());
}

TEST_F(Movies, MovieOfMoreThanTheMostPixelsHasNoPoster) {
    const Bytes bytes = movieFile({.width = 160, .height = 120});
    Image::setMostPixels(160 * 120 - 1);
    const auto known = movie(bytes);
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->posterImage(), nullptr);
    Image::setMostPixels(160 * 120);
    EXPECT_NE(movie(bytes)->posterImage(), nullptr);
}

TEST_F(Movies, FrameThatTakesMoreMemoryThanIsGivenHasNoPoster) {
    const Bytes bytes = movieFile({.frames = 1});
    const auto large = rewritten(bytes, "-vf scale=7680:4320 -c:v mjpeg");
    ASSERT_NE(large, nullptr);
    ASSERT_NE(large->posterImage(), nullptr);
    EXPECT_TRUE(large->posterImage()->pixels());
    const auto larger = rewritten(bytes, "-vf scale=8000:6000 -c:v mjpeg");
    ASSERT_NE(larger, nullptr);
    EXPECT_EQ(larger->posterImage(), nullptr);
}

TEST_F(Movies, ShapeOfMoreThanTheMostPixelsHasNoPoster) {
    Image::setMostPixels(160 * 120 + 1);
    const auto wide = rewritten(movieFile({.width = 160, .height = 120}), "-vf setsar=2/1");
    ASSERT_NE(wide, nullptr);
    EXPECT_EQ(wide->posterImage(), nullptr);
}

/// Sets a 32-bit number of the first box of that name, counted from behind the box's version and flags.
void setField(Bytes& movie, std::string_view box, std::size_t field, std::uint32_t number) {
    constexpr std::size_t kNameVersionAndFlags = 8;
    const std::size_t place = placeOf(box, movie) + kNameVersionAndFlags + 4 * field;
    std::ranges::copy(ByteBuilder().u32(number).bytes(), movie.begin() + static_cast<std::ptrdiff_t>(place));
}

std::int64_t peakMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

TEST_F(Movies, MovieThatAnnouncesMoreSamplesThanAnyHasTakesBoundedMemory) {
    constexpr std::uint32_t kSamples = 84'000'000;
    Bytes bytes = movieFile();
    setField(bytes, "stsz", 0, 1);         // every sample has one byte, so that no list of sizes is there
    setField(bytes, "stsz", 1, kSamples);  // number of samples
    setField(bytes, "stts", 1, kSamples);  // of the first duration
    setField(bytes, "stsc", 2, kSamples);  // in the first chunk
    const std::int64_t before = peakMegabytes();
    if (const auto hostile = movie(bytes); hostile != nullptr && hostile->posterImage() != nullptr) {
        hostile->posterImage()->pixels();
    }
    EXPECT_LT(peakMegabytes() - before, 600);
}

TEST_F(Movies, ManyThreadsLookAtOnce) {
    const std::string path = file(movieFile({.width = 160, .height = 100, .rotation = 90}));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 5; ++turn) expectPoster(movieOfFile(path), numberedQuadrants(160, 100, 1));
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace ZkMobileBackup
