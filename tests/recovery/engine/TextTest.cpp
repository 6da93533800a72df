// Texts of cells: dumpText:andLen:limited:, and texts in rows.

#include <gmock/gmock.h>

#include "recovery/engine/payload_decoder.h"
#include "tests/recovery/engine/RecordTesting.h"
#include "tests/support/DatabaseBuilder.h"

namespace ZkMobileBackup {
namespace {

using namespace testing;
using ::testing::ElementsAre;

constexpr std::size_t kChunk = 4096;
const std::string kEAcute = "\xC3\xA9";

/// The text that a cell with this content is shown as.
std::string shown(const std::string& content) {
    HandMadeDatabase database(32768, 2);
    database.put(32768 + 100, bytesOfText(content));
    const auto parser = parserAt(database, 2, 100);
    PayloadObject payload;
    payload.cellList() = {{PayloadCell::kText, 0, static_cast<std::int32_t>(content.size())}};
    const std::string inRow(parser->dumpBodyOfPayload(&payload, engine::kLiveCell)->cell(0));
    const std::string alone =
        parser->dumpText(32768 + 100, static_cast<std::int64_t>(content.size()), parser->sqliteReader()->dbEnd());
    EXPECT_EQ(inRow, alone);
    return alone;
}

TEST(Text, IsReadAsUtf8) {
    EXPECT_EQ(shown("caf" + kEAcute + " \xF0\x9F\x98\x80"), "caf" + kEAcute + " \xF0\x9F\x98\x80");
}

TEST(Text, EndsAtItsFirstNul) {
    EXPECT_EQ(shown(std::string("ab\0cd", 5)), "ab");
    EXPECT_EQ(shown(std::string("\0cd", 3)), "");
    EXPECT_EQ(shown(std::string("0123456789ab\0def", 16)), "0123456789ab");
}

TEST(Text, ThatIsNoValidUtf8IsDropped) {
    EXPECT_EQ(shown("ab\xFF"), "");
    EXPECT_EQ(shown("ab\xC3"), "");
}

TEST(Text, IsHeldToStrictUtf8) {
    EXPECT_EQ(shown("\xC1\x81"), "");          // overlong "A"
    EXPECT_EQ(shown("\xE0\x82\xA9"), "");      // overlong
    EXPECT_EQ(shown("\xED\xA0\x80"), "");      // a surrogate
    EXPECT_EQ(shown("\xF4\x90\x80\x80"), "");  // above U+10FFFF
    EXPECT_EQ(shown("\xF4\x8F\xBF\xBF"), "\xF4\x8F\xBF\xBF");
}

TEST(Text, IsCutAtItsNulBeforeItsValidityIsJudged) {
    EXPECT_EQ(shown(std::string("ab\0\xFF\xFF", 5)), "ab");
    EXPECT_EQ(shown(std::string("ab\xC3\0\xA9", 5)), "");
}

TEST(Text, LongerThanAChunkIsPutTogetherAgain) {
    std::string text;
    while (text.size() < 3 * kChunk + 100) text += "line " + std::to_string(text.size()) + "\n";
    EXPECT_EQ(shown(text), text);
}

TEST(Text, ChunkEndsAtItsNulAndTheNextOneIsStillRead) {
    std::string text(kChunk + 3, 'a');
    text[10] = '\0';
    EXPECT_EQ(shown(text), std::string(10, 'a') + "aaa");
    text[kChunk] = '\0';
    EXPECT_EQ(shown(text), std::string(10, 'a'));
}

TEST(Text, InvalidChunkAloneIsDropped) {
    std::string text = std::string(kChunk, 'a') + std::string(kChunk, 'b') + std::string(10, 'c');
    text[kChunk + 5] = '\xFF';
    EXPECT_EQ(shown(text), std::string(kChunk, 'a') + std::string(10, 'c'));
}

TEST(Text, CharacterAcrossTwoChunksLosesBoth) {
    const std::string across = std::string(kChunk - 1, 'a') + kEAcute + std::string(kChunk - 1, 'b') + "c";
    EXPECT_EQ(shown(across), "c");
    const std::string beside = std::string(kChunk - 2, 'a') + kEAcute + "b";
    EXPECT_EQ(shown(beside), beside);
}

TEST(Text, ShortChunkCarriesNothingOfTheChunkBefore) {
    EXPECT_EQ(shown(std::string(kChunk, 'a') + "b"), std::string(kChunk, 'a') + "b");
    EXPECT_EQ(shown(std::string(kChunk, 'a') + std::string("b\0", 2)), std::string(kChunk, 'a') + "b");
}

/// Dumps from an image of "abcdefgh", repeated up to 100 bytes.
class LimitedText : public ::testing::Test {
protected:
    std::string dump(std::int64_t content, std::int64_t length, std::int64_t limit) {
        return parser_->dumpText(content, length, limit);
    }

private:
    static Bytes letters() {
        Bytes bytes;
        for (std::size_t i = 0; i < 100; ++i) bytes.push_back(static_cast<std::uint8_t>('a' + i % 8));
        return bytes;
    }
    std::shared_ptr<DlxSQLiteParser> parser_ = DlxSQLiteParser::initWithDBData(letters());
};

TEST_F(LimitedText, IsEmptyBeyondTheLimitOrWithoutALength) {
    EXPECT_EQ(dump(5, 3, 4), "");
    EXPECT_EQ(dump(5, 3, 5), "fgh");  // the limit is the last readable position of a start
    EXPECT_EQ(dump(5, 0, 99), "");
    EXPECT_EQ(dump(5, -1, 99), "");
}

TEST_F(LimitedText, EndsWithTheImage) {
    EXPECT_EQ(dump(96, 50, 99), "abcd");
    EXPECT_EQ(dump(96, 4096, 99), "abcd");
}

TEST_F(LimitedText, LaterChunksPastTheLimitReadTheByteAtTheLimitAgain) {
    EXPECT_EQ(dump(96, 4097, 99), "abcdd");
    EXPECT_EQ(dump(96, 3 * 4096, 99), "abcddd");
    EXPECT_EQ(dump(99, 4097, 99), "dd");
}

TEST_F(LimitedText, NeedsAReader) {
    EXPECT_EQ(parserWithoutReader()->dumpText(0, 10, 10), "");
    EXPECT_EQ(parserWithoutReader()->dumpBlob(0, 10), "");
}

TEST(Text, OfAnotherEncodingIsReadAsUtf8AllTheSame) {
    DatabaseBuilder builder;
    builder.exec("PRAGMA encoding = 'UTF-16le'");
    builder.exec("CREATE TABLE t (a TEXT, b TEXT)");
    builder.insert("t", {std::string("xyz"), std::string("w")});
    // Its schema is in UTF-16 too, so the table is not even found; its row is read from its page.
    const auto parser = DlxSQLiteParser::initWithDBData(builder.bytes());
    RawTableObject table;
    table.setPageNum(2);
    ASSERT_TRUE(parser->parserNodeOfTable(&table));
    ASSERT_EQ(table.rowList().size(), 1U);
    EXPECT_THAT(table.rowList()[0].texts(), ElementsAre("x", "w"));
}

}  // namespace
}  // namespace ZkMobileBackup
