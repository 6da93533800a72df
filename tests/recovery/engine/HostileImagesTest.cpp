#include <gtest/gtest.h>
#include <random>

#include "tests/recovery/engine/PlainReading.h"
#include "tests/support/DatabaseBuilder.h"

// Damaged files: nothing crashes, hangs or reads outside the image, and what can be read comes out as a plain reading
// of the same bytes has it.

namespace ZkMobileBackup {
namespace {

using testing::Bytes;
using testing::PlainTable;

constexpr std::size_t kPageSize = 512;

/// A few pages with everything that is walked: an interior page, deleted rows, a spilled record, free pages.
const Bytes& soundImage() {
    static const Bytes kImage = [] {
        DatabaseBuilder builder({.pageSize = kPageSize});
        builder.exec("CREATE TABLE a (id INTEGER PRIMARY KEY, x TEXT, y INTEGER, z TEXT)");
        builder.exec("CREATE TABLE b (x TEXT, y TEXT, z TEXT)");
        builder.exec("CREATE TABLE gone (id INTEGER PRIMARY KEY, x TEXT, y TEXT, z TEXT)");
        for (int i = 1; i <= 20; ++i) {
            const std::string number = std::to_string(i);
            builder.insert("a", {std::int64_t{i}, "text " + number, std::int64_t{i}, "some more text"});
            builder.insert("gone", {std::int64_t{i}, "gone " + number, "and not", "forgotten " + number});
        }
        builder.insert("b", {"one", "two", std::string(600, 'x')});
        builder.exec("DELETE FROM a WHERE id % 8 = 0");
        builder.exec("DROP TABLE gone");
        return builder.bytes();
    }();
    return kImage;
}

void expectPlainReading(const Bytes& image, const std::string& damage) {
    SCOPED_TRACE(damage);
    const auto parser = DlxSQLiteParser::initWithDBData(image);
    ASSERT_TRUE(parser->parser());
    const std::vector<PlainTable> found = testing::tablesOf(*parser);
    const std::vector<PlainTable> expected = testing::readPlainly(image);
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t table = 0; table < found.size(); ++table) ASSERT_EQ(found[table], expected[table]);
}

void expectPlainReadingWithEveryBitFlipped(std::size_t from, std::size_t to) {
    for (std::size_t position = from; position < to; ++position) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            Bytes image = soundImage();
            image[position] = static_cast<std::uint8_t>(image[position] ^ 1U << bit);
            expectPlainReading(image, "bit " + std::to_string(bit) + " of byte " + std::to_string(position));
            if (::testing::Test::HasFatalFailure()) return;
        }
    }
}

std::size_t pageCount() {
    return soundImage().size() / kPageSize;
}

TEST(HostileImage, OfThisTestIsWorthDamaging) {
    expectPlainReading(soundImage(), "no damage");
    const auto parser = testing::parsedCopy(soundImage());
    ASSERT_EQ(parser->tableList().size(), 3U);
    EXPECT_EQ(testing::liveRows(*parser, 1).size(), 18U);
    EXPECT_GT(testing::deletedRows(*parser, 1).size(), 5U);
    EXPECT_GT(parser->sqliteDBHeader()->freePagePageCount(), 0U);
    EXPECT_EQ(soundImage()[kPageSize], 5);
}

TEST(HostileImage, MayBeCutAtEveryLength) {
    for (std::size_t length = 0; length < soundImage().size(); ++length) {
        const Bytes image(soundImage().begin(), soundImage().begin() + static_cast<std::ptrdiff_t>(length));
        const auto parser = DlxSQLiteParser::initWithDBData(image);
        ASSERT_TRUE(parser->parser()) << length;
        constexpr std::size_t kCompared = 41;
        if (length % kCompared == 0) expectPlainReading(image, "cut at " + std::to_string(length));
    }
}

TEST(HostileImage, MayHaveAnyBitOfItsFileHeaderFlipped) {
    expectPlainReadingWithEveryBitFlipped(16, 18);
    expectPlainReadingWithEveryBitFlipped(28, 40);
}

TEST(HostileImage, MayHaveAnyBitOfItsSchemaPagesHeaderFlipped) {
    expectPlainReadingWithEveryBitFlipped(100, 112);
}

TEST(HostileImage, MayHaveAnyBitOfItsPageHeadersAndPointersFlipped) {
    for (std::size_t page = 1; page < pageCount(); ++page) {
        expectPlainReadingWithEveryBitFlipped(page * kPageSize, page * kPageSize + 12);
    }
}

TEST(HostileImage, MayHaveManyBytesChanged) {
    std::mt19937 random(4711);
    for (int i = 0; i < 150; ++i) {
        Bytes image = soundImage();
        const auto changes = 1 + random() % 40;
        for (std::size_t change = 0; change < changes; ++change) {
            const std::size_t place = random() % image.size();
            // The page size and its neighbours have their own test; large pages make the plain reading slow.
            if (place < 16 || place > 17) image[place] = static_cast<std::uint8_t>(random());
        }
        expectPlainReading(image, "image " + std::to_string(i));
    }
}

TEST(HostileImage, MayConsistOfRandomPages) {
    std::mt19937 random(815);
    for (int i = 0; i < 60; ++i) {
        Bytes image = soundImage();
        for (std::size_t page = 1; page < pageCount(); ++page) {
            // A page type, few cells, and pointers and numbers that are small enough to lead somewhere.
            std::uint8_t* const bytes = &image[page * kPageSize];
            for (std::size_t at = 0; at < kPageSize; ++at) {
                bytes[at] = random() % 3 == 0 ? static_cast<std::uint8_t>(random() % 12) : std::uint8_t{0};
            }
            bytes[0] = random() % 2 == 0 ? 13 : 5;
            bytes[3] = 0;
            bytes[4] = static_cast<std::uint8_t>(random() % 6);
        }
        expectPlainReading(image, "image " + std::to_string(i));
    }
}

TEST(HostileImage, MayNameNoPagesOfItsOwn) {
    for (const std::uint32_t number : {0U, 1U, 2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        testing::HandMadeDatabase database(kPageSize, 4);
        database.schema({{"t", 2, "CREATE TABLE t (a TEXT, b TEXT, c TEXT)"}});
        database.interior(2, {number, number}, number);
        database.freelist(number, 3);
        database.trunk(3, number, {number, 4, number});
        database.put8(database.image.size() - 1, 255);
        expectPlainReading(database.image, "page " + std::to_string(number));
    }
}

TEST(HostileImage, MayBeALongRunOfContinuationBytes) {
    testing::HandMadeDatabase database(32768, 3);
    database.schema({{"t", 2, "CREATE TABLE t (a TEXT DEFAULT 1, b TEXT, c TEXT)"}});
    database.leaf(2, {});
    std::fill(database.image.begin() + 32768 + 8, database.image.end(), std::uint8_t{0xFF});
    const auto parser = database.parsed();
    EXPECT_TRUE(testing::deletedRows(*parser, 1).empty());
}

TEST(HostileImage, MayBeNoDatabaseAtAll) {
    for (const char* text : {"", "x", "SQLite format 3", "Some text that is no database, and ends before page 2."}) {
        const auto parser = DlxSQLiteParser::initWithDBData(testing::bytesOfText(text));
        EXPECT_TRUE(parser->parser()) << text;
        EXPECT_EQ(parser->tableList().size(), 1U);
    }
    Bytes random(5000);
    std::mt19937 generator(1);
    for (std::uint8_t& byte : random) byte = static_cast<std::uint8_t>(generator());
    expectPlainReading(random, "random bytes");
    expectPlainReading(testing::bytesOfText(std::string(3000, '\r')), "leaf types everywhere");
    expectPlainReading(testing::bytesOfText(std::string(3000, '\5')), "interior types everywhere");
}

}  // namespace
}  // namespace ZkMobileBackup
