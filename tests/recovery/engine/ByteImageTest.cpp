#include <cstring>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "recovery/engine/byte_image.h"
#include "recovery/engine/checked_fields.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup::engine {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

std::unique_ptr<ByteImage> imageOf(const Bytes& bytes) {
    return ByteImage::copyOf(bytes);
}

Bytes contentOf(const ByteImage& image) {
    const std::span<const std::uint8_t> bytes = image.bytes(0, image.size());
    return {bytes.begin(), bytes.end()};
}

Bytes countingBytes(std::size_t size) {
    Bytes bytes;
    for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(i + 1));
    return bytes;
}

TEST(ByteImage, ReadsBytesAndBigEndianNumbers) {
    const auto image = imageOf({0x12, 0x34, 0xF6, 0x78, 0x9A});
    EXPECT_EQ(image->byte(2), 0xF6);
    EXPECT_EQ(image->big16(1), 0x34F6);
    EXPECT_EQ(image->big32(1), 0x34F6789AU);
}

TEST(ByteImage, ReadsZeroOnBothSidesOfTheImage) {
    const auto image = imageOf({0x12, 0x34});
    EXPECT_EQ(image->byte(2), 0);
    EXPECT_EQ(image->byte(-1), 0);
    EXPECT_EQ(image->byte(std::int64_t{1} << 62), 0);
    EXPECT_EQ(image->byte(-(std::int64_t{1} << 62)), 0);
}

TEST(ByteImage, NumberThatIsCutByTheEndTakesZerosForTheRest) {
    const auto image = imageOf({0x12, 0x34, 0x56});
    EXPECT_EQ(image->big16(2), 0x5600);
    EXPECT_EQ(image->big32(1), 0x34560000U);
    EXPECT_EQ(image->big32(-1), 0x00123456U);
}

TEST(ByteImage, EmptyImageReadsAsZeros) {
    const auto image = imageOf({});
    EXPECT_EQ(image->size(), 0);
    EXPECT_EQ(image->byte(0), 0);
    EXPECT_EQ(image->big32(0), 0U);
    EXPECT_THAT(image->bytes(0, 1), IsEmpty());
}

TEST(ByteImage, RangeIsCutAtTheEndOfTheImage) {
    const auto image = imageOf({1, 2, 3});
    EXPECT_THAT(image->bytes(1, 1), ElementsAre(2));
    EXPECT_THAT(image->bytes(1, 99), ElementsAre(2, 3));
    EXPECT_THAT(image->bytes(1, std::numeric_limits<std::int64_t>::max()), ElementsAre(2, 3));
    EXPECT_THAT(image->bytes(3, 1), IsEmpty());
    EXPECT_THAT(image->bytes(-1, 2), IsEmpty());
    EXPECT_THAT(image->bytes(0, 0), IsEmpty());
    EXPECT_THAT(image->bytes(0, -1), IsEmpty());
}

TEST(ByteImage, CopyIsIndependentOfTheBytesItWasMadeFrom) {
    Bytes bytes = {1, 2, 3};
    const auto image = imageOf(bytes);
    bytes[0] = 99;
    EXPECT_EQ(image->byte(0), 1);
}

TEST(ByteImageVarint, ReadsLikeTheByteFunction) {
    const auto image = imageOf({0x81, 0x81, 0x01});
    const Varint varint = image->varint(0, 3);
    EXPECT_EQ(varint.value, 2113537U);
    EXPECT_EQ(varint.consumed, 3);
    EXPECT_EQ(varint.advance, 3);
}

TEST(ByteImageVarint, NeverReadsTheByteAtTheLimit) {
    const auto image = imageOf({0x81, 0x01});
    const Varint varint = image->varint(0, 1);
    EXPECT_EQ(varint.value, 1U);
    EXPECT_EQ(varint.consumed, 1);
    EXPECT_EQ(varint.advance, 2);
}

TEST(ByteImageVarint, OneByteNumberAtTheLimitReadsAsNothing) {
    const auto image = imageOf({0x05});
    for (const Varint& varint : {image->varint(0, 0), image->shortVarint(0, 0), image->varint(0, -5)}) {
        EXPECT_EQ(varint.value, 0U);
        EXPECT_EQ(varint.consumed, 0);
        EXPECT_EQ(varint.advance, 1);
    }
}

TEST(ByteImageVarint, ShortReadingAgreesUpToEightBytes) {
    for (std::int64_t width = 1; width <= 8; ++width) {
        Bytes bytes(static_cast<std::size_t>(width), 0x83);
        bytes.back() = 0x05;
        const auto image = imageOf(bytes);
        const Varint full = image->varint(0, width);
        const Varint shortened = image->shortVarint(0, width);
        EXPECT_EQ(shortened.value, full.value) << width;
        EXPECT_EQ(shortened.consumed, width);
        EXPECT_EQ(shortened.advance, width);
        EXPECT_FALSE(shortened.tooLong()) << width;
    }
}

TEST(ByteImageVarint, NineBytesAreTooLong) {
    Bytes bytes(9, 0x80);
    bytes.back() = 0x05;
    const auto image = imageOf(bytes);
    EXPECT_TRUE(image->varint(0, 9).tooLong());
    EXPECT_TRUE(image->shortVarint(0, 9).tooLong());
}

TEST(ByteImageVarint, ShortReadingGivesALongRunUp) {
    const auto image = imageOf(Bytes(1000, 0x80));
    EXPECT_TRUE(image->shortVarint(0, 1000).tooLong());
    EXPECT_EQ(image->shortVarint(0, 1000).consumed, 9);
    EXPECT_EQ(image->varint(0, 1000).consumed, 1000);
}

TEST(Splice, CopiesBytesAsTheyStoodBefore) {
    for (const auto& [destination, source] : {std::pair{2, 0}, {0, 2}, {3, 3}}) {
        Bytes expected = countingBytes(10);
        const auto image = imageOf(expected);
        std::memmove(expected.data() + destination, expected.data() + source, 6);
        image->splice(destination, source, 6);
        EXPECT_EQ(contentOf(*image), expected) << destination << " from " << source;
    }
}

TEST(Splice, IsCutAtTheEndOfTheImage) {
    const auto image = imageOf({1, 2, 3, 4});
    image->splice(3, 0, 4);
    EXPECT_EQ(contentOf(*image), (Bytes{1, 2, 3, 1}));
}

TEST(Splice, FromOutsideTheImageCopiesZeros) {
    const auto image = imageOf({1, 2, 3, 4});
    image->splice(0, 4, 2);
    EXPECT_EQ(contentOf(*image), (Bytes{0, 0, 3, 4}));
}

TEST(Splice, FromAcrossTheEndCopiesZerosForWhatIsNotThere) {
    const auto image = imageOf({1, 2, 3, 4});
    image->splice(0, 3, 3);
    EXPECT_EQ(contentOf(*image), (Bytes{4, 0, 0, 4}));
}

TEST(Splice, OutsideTheImageChangesNothing) {
    const auto image = imageOf({1, 2, 3, 4});
    image->splice(4, 0, 4);
    image->splice(std::int64_t{1} << 40, 0, 4);
    image->splice(0, 2, 0);
    image->splice(0, 2, -4);
    EXPECT_EQ(contentOf(*image), (Bytes{1, 2, 3, 4}));
}

TEST(ByteImageOfFile, HasTheBytesOfTheFile) {
    const TemporaryFolder folder;
    const Bytes bytes = countingBytes(10000);
    writeBytes(folder.path("file"), bytes);
    EXPECT_EQ(contentOf(*ByteImage::ofFile(folder.path("file"))), bytes);
}

TEST(ByteImageOfFile, ChangesAreNotWrittenToTheFile) {
    const TemporaryFolder folder;
    const Bytes bytes = countingBytes(10000);
    writeBytes(folder.path("file"), bytes);
    {
        const auto image = ByteImage::ofFile(folder.path("file"));
        image->splice(0, 5000, 5000);
        EXPECT_NE(contentOf(*image), bytes);
    }
    EXPECT_EQ(readBytes(folder.path("file")), bytes);
}

TEST(ByteImageOfFile, OpensAFileThatMayOnlyBeRead) {
    const TemporaryFolder folder;
    writeBytes(folder.path("file"), Bytes{1, 2, 3});
    ASSERT_EQ(chmod(folder.path("file").c_str(), 0400), 0);
    const auto image = ByteImage::ofFile(folder.path("file"));
    ASSERT_NE(image, nullptr);
    image->splice(0, 1, 1);
    EXPECT_EQ(contentOf(*image), (Bytes{2, 2, 3}));
}

TEST(ByteImageOfFile, EmptyFileIsAnEmptyImage) {
    const TemporaryFolder folder;
    writeBytes(folder.path("file"), Bytes{});
    const auto image = ByteImage::ofFile(folder.path("file"));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->size(), 0);
}

TEST(ByteImageOfFile, IsMissingForAnythingButARegularFile) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(ByteImage::ofFile(folder.path("nothing")), nullptr);
    EXPECT_EQ(ByteImage::ofFile(folder.path()), nullptr);
    EXPECT_EQ(ByteImage::ofFile(folder.path("fifo")), nullptr);
}

TEST(CheckedFields, AreReadFromTheirStart) {
    const auto image = imageOf({0, 0, 0x12, 0x34, 0x56, 0x78, 0x9A});
    const CheckedFields fields(*image, 2, 5);
    EXPECT_EQ(fields.big16(0), 0x1234);
    EXPECT_EQ(fields.big32(1), 0x3456789AU);
}

TEST(CheckedFields, FieldThatDoesNotEndWithinTheLengthIsZero) {
    const auto image = imageOf(Bytes(16, 0x11));
    const CheckedFields fields(*image, 0, 6);
    EXPECT_EQ(fields.big32(2), 0x11111111U);
    EXPECT_EQ(fields.big32(3), 0U);
    EXPECT_EQ(fields.big16(4), 0x1111);
    EXPECT_EQ(fields.big16(5), 0);
    EXPECT_EQ(fields.big16(std::numeric_limits<std::int64_t>::max()), 0);
    EXPECT_EQ(CheckedFields(*image, 0, 0).big16(0), 0);
}

TEST(CheckedFields, LengthIsTheCallersOwnAndMayReachPastTheImage) {
    const auto image = imageOf({0x11, 0x22});
    EXPECT_EQ(CheckedFields(*image, 0, 100).big32(0), 0x11220000U);
    EXPECT_EQ(CheckedFields(*image, 0, 100).big32(50), 0U);
}

}  // namespace
}  // namespace ZkMobileBackup::engine
