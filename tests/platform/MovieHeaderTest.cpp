#include <gtest/gtest.h>
#include <memory>
#include <string_view>

#include "platform/ByteSources.h"
#include "platform/movie_header.h"
#include "tests/support/ByteBuilder.h"

namespace ZkMobileBackup {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::optional<MovieHeader> headerOf(const Bytes& file) {
    return readMovieHeader(HeldBytes(std::make_shared<const Bytes>(file)));
}

Bytes box(std::string_view type, const Bytes& content) {
    ByteBuilder bytes;
    return bytes.u32(static_cast<std::uint32_t>(8 + content.size())).text(type).bytes(content).bytes();
}

Bytes longBox(std::string_view type, const Bytes& content) {
    ByteBuilder bytes;
    return bytes.u32(1).text(type).u64(16 + content.size()).bytes(content).bytes();
}

Bytes boxToTheEnd(std::string_view type, const Bytes& content) {
    ByteBuilder bytes;
    return bytes.u32(0).text(type).bytes(content).bytes();
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes shortHeader(std::uint32_t timeScale, std::uint32_t duration) {
    ByteBuilder content;
    content.u32(0).u32(11).u32(12).u32(timeScale).u32(duration).fill(80);
    return box("mvhd", content.bytes());
}

Bytes longHeader(std::uint32_t timeScale, std::uint64_t duration) {
    ByteBuilder content;
    content.u8(1).fill(3).u64(11).u64(12).u32(timeScale).u64(duration).fill(80);
    return box("mvhd", content.bytes());
}

void expectHeader(const Bytes& file, std::int64_t duration, std::int64_t timeScale) {
    const auto header = headerOf(file);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->duration, duration);
    EXPECT_EQ(header->timeScale, timeScale);
}

const Bytes kMedia(1000, 0x11);

TEST(MovieHeader, Has32BitNumbers) {
    expectHeader(box("moov", shortHeader(600, 0xFFFF'FFFE)), 0xFFFF'FFFE, 600);
}

TEST(MovieHeader, Has64BitNumbersInVersion1) {
    expectHeader(box("moov", longHeader(90'000, 0x1'2345'6789)), 0x1'2345'6789, 90'000);
}

TEST(MovieHeader, StandsBeforeOrAfterTheMedia) {
    const Bytes movie = box("moov", joined({box("udta", {1, 2, 3}), shortHeader(600, 77)}));
    expectHeader(joined({box("ftyp", {1}), movie, box("mdat", kMedia)}), 77, 600);
    expectHeader(joined({box("ftyp", {1}), box("mdat", kMedia), movie}), 77, 600);
}

TEST(MovieHeader, Boxes64BitLongArePassedAndEntered) {
    expectHeader(joined({longBox("mdat", kMedia), longBox("moov", shortHeader(600, 77))}), 77, 600);
}

TEST(MovieHeader, BoxOfSize0GoesOnToTheEnd) {
    expectHeader(joined({box("ftyp", {1}), boxToTheEnd("moov", boxToTheEnd("mvhd", Bytes(100, 2)))}), 0x0202'0202,
                 0x0202'0202);
    EXPECT_FALSE(headerOf(joined({boxToTheEnd("mdat", kMedia), box("moov", shortHeader(600, 77))})));
}

TEST(MovieHeader, UnknownDurationsAre0) {
    expectHeader(box("moov", shortHeader(600, 0xFFFF'FFFF)), 0, 600);
    expectHeader(box("moov", longHeader(600, 0xFFFF'FFFF'FFFF'FFFF)), 0, 600);
    expectHeader(box("moov", longHeader(600, 0x8000'0000'0000'0000)), 0, 600);
    expectHeader(box("moov", longHeader(600, 0x7FFF'FFFF'FFFF'FFFF)), 0x7FFF'FFFF'FFFF'FFFF, 600);
}

TEST(MovieHeader, FirstOfSeveralIsTaken) {
    expectHeader(joined({box("moov", joined({shortHeader(1, 2), shortHeader(3, 4)})), box("moov", shortHeader(5, 6))}),
                 2, 1);
}

TEST(MovieHeader, FilesWithoutOneHaveNone) {
    EXPECT_FALSE(headerOf({}));
    EXPECT_FALSE(headerOf(Bytes(7, 0)));
    EXPECT_FALSE(headerOf(kMedia));
    EXPECT_FALSE(headerOf(box("moov", {})));
    EXPECT_FALSE(headerOf(joined({box("moov", box("trak", {})), shortHeader(600, 77)})));
    EXPECT_FALSE(headerOf(shortHeader(600, 77)));
}

TEST(MovieHeader, AnyShorterPrefixHasNone) {
    const Bytes whole = box("moov", longHeader(600, 77));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(headerOf(Bytes(whole.begin(), whole.begin() + int(size)))) << size;
    }
}

TEST(MovieHeader, HeaderThatEndsBeforeItsNumbersHasNone) {
    const Bytes behind = box("free", Bytes(200, 9));
    for (std::size_t size = 0; size < 20; ++size) {
        EXPECT_FALSE(headerOf(joined({box("moov", box("mvhd", Bytes(size, 0))), behind}))) << size;
    }
    for (std::size_t size = 1; size < 32; ++size) {
        Bytes content(size, 0);
        content[0] = 1;
        EXPECT_FALSE(headerOf(joined({box("moov", box("mvhd", content)), behind}))) << size;
    }
}

TEST(MovieHeader, BoxThatEndsBehindItsParentOrBeforeItselfEndsTheSearch) {
    const Bytes movie = box("moov", shortHeader(600, 77));
    for (const std::uint32_t size : {2U, 7U, 0x7FFF'FFFFU, 0xFFFF'FFFFU}) {
        ByteBuilder wrong;
        wrong.u32(size).text("free").bytes(movie);
        EXPECT_FALSE(headerOf(wrong.bytes())) << size;
    }
}

TEST(MovieHeader, OversizedLongBoxEndsTheSearch) {
    const Bytes movie = box("moov", shortHeader(600, 77));
    for (const std::uint64_t size : {0ULL, 8ULL, 15ULL, 0x7FFF'FFFF'FFFF'FFFFULL, 0xFFFF'FFFF'FFFF'FFF0ULL}) {
        ByteBuilder wrong;
        wrong.u32(1).text("free").u64(size).bytes(movie);
        EXPECT_FALSE(headerOf(wrong.bytes())) << size;
    }
}

/// A file of nothing but empty boxes, as long as one likes.
class EmptyBoxes final : public ByteSource {
public:
    std::int64_t size() const override { return std::int64_t{1} << 50; }
    std::size_t read(std::int64_t /*position*/, std::span<std::uint8_t> bytes) const override {
        ++reads;
        for (std::size_t k = 0; k < bytes.size(); ++k) bytes[k] = k % 8 == 3 ? 8 : 0;
        return bytes.size();
    }
    mutable int reads = 0;
};

TEST(MovieHeader, SearchInEndlessBoxesEnds) {
    const EmptyBoxes file;
    EXPECT_FALSE(readMovieHeader(file));
    EXPECT_LT(file.reads, 1'000'000);
}

}  // namespace
}  // namespace ZkMobileBackup
