#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "export/bundle_cells.h"
#include "platform/Xml.h"
#include "tests/export/BundleTesting.h"

namespace ZkMobileBackup {
namespace {

using testing::DoubleEq;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/// Streams one table on its own.
class BundleCellsTest : public testing::Test {
protected:
    BundleCellsTest() { writer->setFileCreatorDelegate(&delegate); }

    std::string streamed(const BundleTable& table, const std::vector<std::string>& keys, const Rows& rows) {
        std::string text;
        XmlStream stream(text, 0);
        BundleCells(table, *writer, stream).writeTable(rows, static_cast<std::int32_t>(rows.size()), [&] {
            appendHeaderCells(stream, table, keys);
            return std::span(keys);
        });
        return text;
    }
    /// The cells of data, see cellsWithStyle.
    Texts cells(const BundleTable& table, const std::vector<std::string>& keys, const Rows& rows) {
        return cellsOf(streamed(table, keys, rows), table.data.style);
    }
    Texts headers(const BundleTable& table, const std::vector<std::string>& keys) {
        return cellsOf(streamed(table, keys, Rows()), table.header.style);
    }

    std::shared_ptr<FileCreator> writer = FileCreator::init();
    RecordingWriterDelegate delegate;

private:
    static Texts cellsOf(const std::string& text, const char* style) {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_string(text.c_str()));
        return cellsWithStyle(document.child("sf:datasource"), style);
    }
};

const Texts kAbc = {"A", "B", "C"};

TEST_F(BundleCellsTest, DataSourceIsWrittenByteForByte) {
    EXPECT_EQ(streamed(kNumbersTable, {"A", "B"}, Rows({rowOf({"A", "B"})})),
              "<sf:datasource sfa:ID=\"SFTConcreteTableDataSource-0\">\n"
              "\t<sf:t sf:s=\"SFTCellStyle-105\" sf:w=\"30.469574\" sf:h=\"14\" sf:ct=\"0\">\n"
              "\t\t<sf:ct sfa:s=\"A\"></sf:ct>\n"
              "\t</sf:t>\n"
              "\t<sf:t sf:s=\"SFTCellStyle-105\" sf:w=\"30.469574\" sf:h=\"14\">\n"
              "\t\t<sf:ct sfa:s=\"B\"></sf:ct>\n"
              "\t</sf:t>\n"
              "\t<sf:t sf:s=\"SFTCellStyle-100\" sf:w=\"30.469574\" sf:h=\"14\" sf:ct=\"255\">\n"
              "\t\t<sf:ct sfa:s=\"a\"></sf:ct>\n"
              "\t</sf:t>\n"
              "\t<sf:t sf:s=\"SFTCellStyle-100\" sf:w=\"30.469574\" sf:h=\"14\">\n"
              "\t\t<sf:ct sfa:s=\"b\"></sf:ct>\n"
              "\t</sf:t>\n"
              "</sf:datasource>\n");
}

TEST_F(BundleCellsTest, PagesCellsHaveTheirOwnLookAndTheDataSourceNoAttributes) {
    EXPECT_EQ(streamed(kPagesTable, {"A"}, Rows({rowOf({"A"})})),
              "<sf:datasource>\n"
              "\t<sf:t sf:s=\"SFTCellStyle-6\" sf:w=\"41.347656\" sf:h=\"24\" sf:ct=\"0\">\n"
              "\t\t<sf:ct sfa:s=\"A\"></sf:ct>\n"
              "\t</sf:t>\n"
              "\t<sf:t sf:s=\"SFTCellStyle-2\" sf:w=\"29.347656\" sf:h=\"24\" sf:ct=\"256\">\n"
              "\t\t<sf:ct sfa:s=\"a\"></sf:ct>\n"
              "\t</sf:t>\n"
              "</sf:datasource>\n");
}

TEST_F(BundleCellsTest, StreamIsWhatAPrettyPrintedTreeIs) {
    const std::string text = streamed(kPagesTable, kAbc, Rows({rowOf(kAbc), Dictionary{{"B", "x\ty\r\n\"<&>' ]]>"}}}));
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(text.c_str()));
    EXPECT_EQ(prettyPrinted(document), "<?xml version=\"1.0\"?>\n" + text);
}

TEST_F(BundleCellsTest, OnlyTheFirstHeaderCellStatesAnAdvance) {
    EXPECT_THAT(headers(kNumbersTable, kAbc), ElementsAre("0:A", ":B", ":C"));
    EXPECT_THAT(headers(kPagesTable, kAbc), ElementsAre("0:A", ":B", ":C"));
}

TEST_F(BundleCellsTest, RowsWithAllKeysAdvanceAtTheirFirstCellOnly) {
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({rowOf(kAbc, "1"), rowOf(kAbc, "2")})),
                ElementsAre("254:a1", ":b1", ":c1", "254:a2", ":b2", ":c2"));
}

TEST_F(BundleCellsTest, ValuesAreFoundByKeyNotByPlace) {
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({rowOf({"C", "B", "A"})})), ElementsAre("254:a", ":b", ":c"));
}

TEST_F(BundleCellsTest, MissingKeysInFrontAddToTheAdvanceOfTheFirstCell) {
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({rowOf({"C"})})), ElementsAre("256:c"));
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({rowOf({"B", "C"})})), ElementsAre("255:b", ":c"));
}

TEST_F(BundleCellsTest, MissingKeysBetweenCellsAdvanceByOneMore) {
    EXPECT_THAT(cells(kNumbersTable, {"A", "B", "C", "D", "E"}, Rows({rowOf({"A", "C", "E"})})),
                ElementsAre("252:a", "2:c", "2:e"));
    EXPECT_THAT(cells(kNumbersTable, {"A", "B", "C", "D"}, Rows({rowOf({"A", "D"})})), ElementsAre("253:a", "3:d"));
}

TEST_F(BundleCellsTest, MissingKeysAtTheEndAreCarriedIntoTheNextRow) {
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({rowOf({"A", "B"}), rowOf({"A"}), rowOf({"C"}), rowOf(kAbc)})),
                ElementsAre("254:a", ":b", "255:a", "258:c", "254:a", ":b", ":c"));
}

TEST_F(BundleCellsTest, RowWithoutKeysKeepsTheCarryAndTakesNoLine) {
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({rowOf({"A"}), Dictionary(), Dictionary(), rowOf({"B"})})),
                ElementsAre("254:a", "257:b"));
    EXPECT_THAT(cells(kPagesTable, kAbc, Rows({Dictionary(), rowOf(kAbc)})), ElementsAre("254:a", ":b", ":c"));
}

TEST_F(BundleCellsTest, LastRowWithoutKeysWritesNothing) {
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({rowOf({"A"}), Dictionary()})), ElementsAre("254:a"));
}

TEST_F(BundleCellsTest, RowOfOtherKeysOnlyCarriesTheColumnsShownAndDropsTheCarryBefore) {
    EXPECT_THAT(cells(kPagesTable, kAbc, Rows({rowOf({"A", "B"}), rowOf({"Z"}), rowOf(kAbc)})),
                ElementsAre("254:a", ":b", "257:a", ":b", ":c"));
}

TEST_F(BundleCellsTest, NullCountsAsAnEmptyCell) {
    EXPECT_THAT(cells(kNumbersTable, kAbc, Rows({Dictionary{{"A", "a"}, {"B", Value()}, {"C", "c"}}})),
                ElementsAre("254:a", ":", ":c"));
}

TEST_F(BundleCellsTest, ValuesOfOtherKindsBecomeTextsAsInEveryDocument) {
    EXPECT_THAT(cells(kNumbersTable, {"A", "B"}, Rows({Dictionary{{"A", Array{"1", "2"}}, {"B", 5}}})),
                ElementsAre("255:  \r\n1  \r\n2", ":"));
}

TEST_F(BundleCellsTest, CharactersThatXmlCannotCarryAreLeftOut) {
    EXPECT_THAT(cells(kNumbersTable, {"A"}, Rows({Dictionary{{"A", std::string("x\x01y\0z\xFF", 6)}}})),
                ElementsAre("256:xyz"));
}

TEST_F(BundleCellsTest, PagesShowsSixtyColumnsAndCountsItsRowsByThem) {
    EXPECT_THAT(headers(kPagesTable, manyKeys(60)), SizeIs(60));
    EXPECT_THAT(headers(kPagesTable, manyKeys(61)), SizeIs(60));
    for (const auto& [count, advance] : {std::pair{59, "198:"}, {60, "197:"}, {61, "197:"}, {70, "197:"}}) {
        const Texts keys = manyKeys(static_cast<std::size_t>(count));
        const Texts found = cells(kPagesTable, keys, Rows({rowOf(keys)}));
        EXPECT_THAT(found, SizeIs(std::min(count, 60)));
        EXPECT_THAT(found.at(0), StartsWith(advance)) << count;
    }
}

TEST_F(BundleCellsTest, KeysBeyondTheSixtiethAreNeitherWrittenNorSkipped) {
    const Texts keys = manyKeys(70);
    EXPECT_THAT(cells(kPagesTable, keys, Rows({rowOf({"K0", "K65"}), rowOf({"K69"}), rowOf({"K1"})})),
                ElementsAre("197:k", "258:k"));
}

TEST_F(BundleCellsTest, NumbersShowsEveryColumnEvenIfTheGridIsTooNarrow) {
    const Texts keys = manyKeys(300);
    const Texts found = cells(kNumbersTable, keys, Rows({rowOf(keys)}));
    EXPECT_THAT(found, SizeIs(300));
    EXPECT_EQ(found.at(0), "-43:k");
}

TEST_F(BundleCellsTest, RowsWithoutAnyKeysMakeAnEmptyDataSource) {
    EXPECT_EQ(streamed(kPagesTable, {}, Rows({Dictionary(), Dictionary()})), "<sf:datasource></sf:datasource>\n");
}

TEST_F(BundleCellsTest, OnlyNumbersTablesOfSeveralRowsHeedARequestToStop) {
    writer->setIsStop(true);
    const Rows rows({rowOf(kAbc)});
    EXPECT_THAT(streamed(kNumbersTable, kAbc, rows), Not(testing::HasSubstr("sf:t")));
    EXPECT_THAT(delegate.progress, IsEmpty());
    EXPECT_THAT(cells(kNumbersOneRowTable, kAbc, rows), SizeIs(3));
    EXPECT_THAT(cells(kPagesTable, kAbc, rows), SizeIs(3));
}

TEST_F(BundleCellsTest, StopBetweenRowsKeepsTheRowsBefore) {
    delegate.onProgress = [this](double process) { writer->setIsStop(process > 0.3); };
    EXPECT_THAT(cells(kNumbersTable, {"A"}, equalRows(3, rowOf({"A"}))), ElementsAre("256:a"));
    EXPECT_THAT(delegate.progress, ElementsAre(DoubleEq(0.2), DoubleEq(0.4)));
}

TEST_F(BundleCellsTest, ProgressComesAfterTheHeaderAndEveryRow) {
    streamed(kPagesTable, {"A"}, equalRows(2, rowOf({"A"})));
    EXPECT_THAT(delegate.progress, ElementsAre(DoubleEq(0.2), DoubleEq(0.5), DoubleEq(0.8)));
}

TEST_F(BundleCellsTest, ProgressIsPutIntoTheSliceOfTheFileButForTheTableOfOneRow) {
    writer->setIndex(1);
    writer->setCount(2);
    streamed(kNumbersTable, {"A"}, Rows({rowOf({"A"})}));
    streamed(kPagesTable, {"A"}, Rows({rowOf({"A"})}));
    streamed(kNumbersOneRowTable, {"A"}, Rows({rowOf({"A"})}));
    EXPECT_THAT(delegate.progress,
                ElementsAre(DoubleEq(0.6), DoubleEq(0.9), DoubleEq(0.6), DoubleEq(0.9), DoubleEq(0.2), DoubleEq(0.8)));
}

}  // namespace
}  // namespace ZkMobileBackup
