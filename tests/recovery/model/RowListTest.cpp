#include <gmock/gmock.h>
#include <random>

#include "recovery/model/RowStore.h"

namespace ZkMobileBackup {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Texts = std::vector<std::string>;

TEST(Row, WithoutContentHasNoCells) {
    const Row row;
    EXPECT_EQ(row.count(), 0U);
    EXPECT_EQ(row.cell(0), "");
    EXPECT_THAT(row.texts(), IsEmpty());
    EXPECT_EQ(row.dictionary(), nullptr);
}

TEST(Row, GivesItsCellsInOrder) {
    RowList rows;
    rows.append(Texts{"1", "", "some text", "NULL"});
    const Row row = rows[0];
    EXPECT_EQ(row.count(), 4U);
    EXPECT_EQ(row.cell(0), "1");
    EXPECT_EQ(row.cell(1), "");
    EXPECT_EQ(row.cell(2), "some text");
    EXPECT_EQ(row.cell(3), "NULL");
    EXPECT_THAT(row.texts(), ElementsAre("1", "", "some text", "NULL"));
    EXPECT_THAT(Texts(row.begin(), row.end()), ElementsAre("1", "", "some text", "NULL"));
}

TEST(Row, CellPastItsEndIsTheEmptyText) {
    RowList rows;
    rows.append(Texts{"1", "2"});
    EXPECT_EQ(rows[0].cell(2), "");
    EXPECT_EQ(rows[0].cell(~std::size_t{0}), "");
}

TEST(Row, MayHaveNoCells) {
    RowList rows;
    rows.append(Texts{});
    EXPECT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].count(), 0U);
    EXPECT_EQ(rows[0].dictionary(), nullptr);
}

TEST(Row, KeepsNulsInsideATextAndAnyOtherByte) {
    RowList rows;
    const std::string bytes("a\0b\xFF\xFE\xFD\xFC\xFB\xFA", 9);
    rows.append(Texts{bytes, "0", bytes});
    EXPECT_THAT(rows[0].texts(), ElementsAre(bytes, "0", bytes));
}

class CellOfLength : public ::testing::TestWithParam<std::size_t> {};

TEST_P(CellOfLength, IsKeptWhole) {
    const std::string text(GetParam(), 'x');
    RowList rows;
    rows.append(Texts{text, "next"});
    rows.append(Texts{"before", text});
    EXPECT_THAT(rows[0].texts(), ElementsAre(text, "next"));
    EXPECT_THAT(rows[1].texts(), ElementsAre("before", text));
}

INSTANTIATE_TEST_SUITE_P(AroundEachForm, CellOfLength,
                         ::testing::Values(0, 1, 4, 5, 127, 128, 248, 249, 250, 251, 252, 255, 256, 4095, 4096, 65535,
                                           65536, 3000000));

TEST(RowStore, FrequentTextsReadLikeAnyOther) {
    RowStore store;
    RowWriter row = store.beginRow();
    row.append(FrequentText::kNull);
    row.append(FrequentText::kZero);
    row.append(FrequentText::kOne);
    row.append(FrequentText::kMinusOne);
    for (const char* text : {"NULL", "0", "1", "-1", "null", "NULLS", "00", "-"}) row.append(text);
    EXPECT_THAT(row.finish().texts(),
                ElementsAre("NULL", "0", "1", "-1", "NULL", "0", "1", "-1", "null", "NULLS", "00", "-"));
}

TEST(RowStore, PlainCellIsAnyShortTextOfAscii) {
    RowStore store;
    for (std::size_t length = 0; length <= 249; ++length) {
        const std::vector<std::uint8_t> text(length, std::uint8_t{0x7F});
        RowWriter row = store.beginRow();
        ASSERT_TRUE(row.appendPlain(text)) << length;
        row.append("next");
        ASSERT_THAT(row.finish().texts(), ElementsAre(std::string(length, '\x7F'), "next"));
    }
    RowWriter row = store.beginRow();
    EXPECT_FALSE(row.appendPlain(std::vector<std::uint8_t>(250, 'x')));
}

TEST(RowStore, PlainCellIsTurnedDownForANulOrAByteAboveAsciiAnywhere) {
    RowStore store;
    RowWriter row = store.beginRow();
    for (std::size_t length = 1; length <= 40; ++length) {
        for (std::size_t position = 0; position < length; ++position) {
            for (const std::uint8_t byte : std::vector<std::uint8_t>{0x00, 0x80, 0xFF}) {
                std::vector<std::uint8_t> text(length, std::uint8_t{0x01});
                text[position] = byte;
                ASSERT_FALSE(row.appendPlain(text)) << length << " bytes, number " << position;
            }
        }
    }
    row.append("alone");
    EXPECT_THAT(row.finish().texts(), ElementsAre("alone"));
}

TEST(RowStore, IntegersAreWrittenInDecimal) {
    RowStore store;
    RowWriter row = store.beginRow();
    for (const std::int64_t number :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{2}, std::int64_t{-2}, std::int64_t{65535},
          std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
        row.appendInteger(number);
    }
    EXPECT_THAT(row.finish().texts(),
                ElementsAre("0", "1", "-1", "2", "-2", "65535", "-9223372036854775808", "9223372036854775807"));
}

TEST(RowStore, IntegersAroundEachPowerOfTenAreWrittenInDecimal) {
    std::vector<std::int64_t> numbers;
    for (std::int64_t power = 1;; power *= 10) {
        numbers.insert(numbers.end(), {power - 1, power, power + 1, 1 - power, -power, -power - 1});
        if (power == 1'000'000'000'000'000'000) break;
    }
    RowStore store;
    RowWriter row = store.beginRow();
    std::vector<std::string> expected;
    for (const std::int64_t number : numbers) {
        row.appendInteger(number);
        expected.push_back(std::to_string(number));
    }
    EXPECT_THAT(row.finish().texts(), ::testing::ElementsAreArray(expected));
}

TEST(RowStore, NarrowIntegersAreWrittenInDecimal) {
    RowStore store;
    RowWriter row = store.beginRow();
    for (const std::int32_t number :
         {0, 1, -1, 99, -100, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        row.appendInteger(number);
    }
    EXPECT_THAT(row.finish().texts(), ElementsAre("0", "1", "-1", "99", "-100", "-2147483648", "2147483647"));
}

TEST(RowStore, BytesAreWrittenAsUpperCaseDigitsOfAnyNumber) {
    RowStore store;
    RowWriter row = store.beginRow();
    row.appendHexDigits({});
    row.appendHexDigits(std::vector<std::uint8_t>{0x00, 0x1A, 0xFF});
    row.appendHexDigits(std::vector<std::uint8_t>(125, 0xB7));
    row.appendHexDigits(std::vector<std::uint8_t>(40'000, 0xC0));
    const std::vector<std::string> texts = row.finish().texts();
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[0], "");
    EXPECT_EQ(texts[1], "001AFF");
    for (const auto& [text, digits, bytes] : {std::tuple(texts[2], "B7", 125U), std::tuple(texts[3], "C0", 40'000U)}) {
        ASSERT_EQ(text.size(), 2 * bytes);
        for (std::size_t i = 0; i < text.size(); i += 2) ASSERT_EQ(text.substr(i, 2), digits);
    }
}

TEST(RowStore, RowsOfManyBlocksKeepTheirTexts) {
    constexpr std::size_t kRows = 30'000;
    const auto textOf = [](std::size_t number) { return std::to_string(number) + std::string(700, 'x'); };
    RowStore store;
    std::vector<Row> rows;
    for (std::size_t i = 0; i < kRows; ++i) {
        RowWriter row = store.beginRow();
        row.append(textOf(i));
        rows.push_back(row.finish());
    }
    for (std::size_t i = 0; i < kRows; ++i) ASSERT_EQ(rows[i].cell(0), textOf(i));
}

TEST(RowStore, RowThatIsBegunAgainForgetsItsCells) {
    RowStore store;
    store.beginRow().append("given up");
    RowWriter row = store.beginRow();
    row.append("kept");
    EXPECT_THAT(row.finish().texts(), ElementsAre("kept"));
}

TEST(RowStore, EqualRowsOneAfterTheOtherReadTheSame) {
    RowList rows;
    for (int i = 0; i < 3; ++i) rows.append(Texts{"-1", "NULL", "NULL"});
    rows.append(Texts{"-1", "NULL"});
    rows.append(Texts{"-1", "NULL", "x"});
    rows.append(Texts{"-1", "NULL", "NULL"});
    for (const std::size_t position : {0U, 1U, 2U, 5U})
        EXPECT_THAT(rows[position].texts(), ElementsAre("-1", "NULL", "NULL"));
    EXPECT_THAT(rows[3].texts(), ElementsAre("-1", "NULL"));
    EXPECT_THAT(rows[4].texts(), ElementsAre("-1", "NULL", "x"));
}

TEST(RowStore, KeepsManyRowsOfAllSizes) {
    std::mt19937 random(1);
    const auto upTo = [&random](std::size_t most) { return random() % (most + 1); };
    std::vector<Texts> expected;
    RowList rows;
    for (int i = 0; i < 3000; ++i) {
        Texts row;
        for (std::size_t cells = upTo(6); cells > 0; --cells) {
            row.emplace_back(upTo(20) == 0 ? upTo(20000) : upTo(12), static_cast<char>('a' + upTo(25)));
        }
        rows.append(row);
        expected.push_back(std::move(row));
    }
    for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(rows[i].texts(), expected[i]) << i;
}

TEST(RowList, KeepsTheOrderInWhichRowsCame) {
    RowList rows;
    for (const char* text : {"b", "a", "c"}) rows.append(Texts{text});
    Texts first;
    for (const Row& row : rows) first.emplace_back(row.cell(0));
    EXPECT_THAT(first, ElementsAre("b", "a", "c"));
}

TEST(RowList, HoldsResultRows) {
    RowList rows;
    rows.append(Dictionary{{"name", "x"}});
    ASSERT_NE(rows[0].dictionary(), nullptr);
    EXPECT_EQ(*rows[0].dictionary()->text("name"), "x");
    EXPECT_EQ(rows[0].count(), 0U);
    EXPECT_EQ(rows[0].cell(0), "");
    rows[0].dictionary()->set("name", "y");
    EXPECT_EQ(*rows[0].dictionary()->text("name"), "y");
}

TEST(RowList, ResultRowsStayWhereTheyAreWhenMoreCome) {
    RowList rows;
    rows.append(Dictionary{{"name", "first"}});
    const Dictionary* const first = rows[0].dictionary();
    for (int i = 0; i < 1000; ++i) rows.append(Dictionary{{"name", "more"}});
    EXPECT_EQ(rows[0].dictionary(), first);
}

TEST(RowList, TakesRowsOfAnotherStoreAsCopies) {
    RowList target;
    {
        RowList source;
        source.append(Texts{"1", "raw"});
        source.append(Dictionary{{"name", "result"}});
        target.append(source);
    }
    EXPECT_THAT(target[0].texts(), ElementsAre("1", "raw"));
    EXPECT_EQ(*target[1].dictionary()->text("name"), "result");
}

TEST(RowList, TakesRowsOfItsOwnStoreAsTheyAre) {
    const auto store = std::make_shared<RowStore>();
    RowList source(store);
    RowList target(store);
    source.append(Dictionary{{"name", "result"}});
    target.append(source);
    EXPECT_EQ(target[0].dictionary(), source[0].dictionary());
}

TEST(RowList, MayBeAppendedToItself) {
    RowList rows;
    rows.append(Texts{"a"});
    rows.append(Texts{"b"});
    rows.append(rows);
    EXPECT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows[3].cell(0), "b");
}

TEST(RowList, RepeatedRowStandsThereSoManyTimes) {
    const auto store = std::make_shared<RowStore>();
    RowList source(store);
    source.append(Texts{"-1", "NULL"});
    RowList sharing(store);
    RowList apart;
    sharing.appendRepeatedly(source[0], store, 3);
    apart.appendRepeatedly(source[0], store, 3);
    for (const RowList* rows : {&sharing, &apart}) {
        ASSERT_EQ(rows->size(), 3U);
        EXPECT_EQ((*rows)[2].texts(), (Texts{"-1", "NULL"}));
    }
}

TEST(RowList, ClearedListKeepsNoRows) {
    RowList rows;
    rows.append(Texts{"a"});
    rows.clear();
    EXPECT_TRUE(rows.empty());
    rows.append(Texts{"b"});
    EXPECT_EQ(rows[0].cell(0), "b");
}

}  // namespace
}  // namespace ZkMobileBackup
