#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "export/PagesCreator.h"
#include "export/WritePagesFiles.h"
#include "platform/Xml.h"
#include "tests/export/BundleTesting.h"

namespace ZkMobileBackup {
namespace {

using testing::DoubleEq;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kHeaderStyle = "SFTCellStyle-6";
constexpr const char* kDataStyle = "SFTCellStyle-2";

class PagesCreatorTest : public BundleTest {
protected:
    std::shared_ptr<PagesCreator> creatorOf(const Rows& rows) {
        auto creator = PagesCreator::initWithDictionary(rows, target());
        creator->setFileCreatorDelegate(&delegate);
        return creator;
    }
    Bundle documentOf(const Rows& rows) {
        const auto creator = creatorOf(rows);
        creator->startConvert();
        EXPECT_EQ(creator->failure(), "");
        return Bundle(creator->writtenPath(), unpacked.path());
    }
    /// A writer of the part alone, after laying out the stage folder.
    std::shared_ptr<WritePagesFiles> partWriter() {
        creatorOf(Rows())->initPagesFile();
        auto writer = WritePagesFiles::init();
        writer->setFileCreatorDelegate(&delegate);
        return writer;
    }
    std::string indexPath() const { return stagePath("PgsStage/index.xml"); }
    Bundle stagedIndex() const { return Bundle(fileText(indexPath())); }

    /// "width height" of the page for a table of this size.
    static std::string pageOf(std::int32_t columns, std::int32_t rows) {
        pugi::xml_document document;
        const pugi::xml_node page = document.append_child("page");
        WritePagesFiles::init()->writeSize(page, columns, rows);
        EXPECT_STREQ(page.attribute("sl:page-scale").value(), "1");
        return page.attribute("sl:page-width").value() + std::string(" ") + page.attribute("sl:page-height").value();
    }
};

TEST_F(PagesCreatorTest, WritesHeaderAndRowsIntoTheGridOfTheTemplate) {
    const Bundle document = documentOf(Rows({rowOf({"A", "B"}, "1"), rowOf({"B"}, "2"), rowOf({"A", "B"}, "3")}));
    EXPECT_EQ(folder.names(), Texts{"Table.pages"});
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kHeaderStyle), ElementsAre("0:A", ":B"));
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle),
                ElementsAre("255:a1", ":b1", "256:b2", "255:a3", ":b3"));
    EXPECT_THAT(attributesOf(document.dataSource()), IsEmpty());
    EXPECT_EQ(countOf(document.grid(), "sf:datasource"), 1U);
}

TEST_F(PagesCreatorTest, PartIsPrettyPrintedFromItsFirstLineToItsLast) {
    const Bundle document = documentOf(Rows({rowOf({"A"}), rowOf({"A"})}));
    EXPECT_TRUE(document.text().starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<sl:document "));
    pugi::xml_document again;
    ASSERT_TRUE(again.load_string(document.text().c_str(), pugi::parse_default | pugi::parse_declaration));
    EXPECT_EQ(prettyPrinted(again), document.text());
}

TEST_F(PagesCreatorTest, NamesStandInFront) {
    EXPECT_THAT(
        cellsWithStyle(documentOf(Rows({rowOf({"Last Name", "Phone", "First Name"})})).dataSource(), kHeaderStyle),
        ElementsAre("0:First Name", ":Last Name", ":Phone"));
}

TEST_F(PagesCreatorTest, CountsOfTheGridComeLastAndInThisOrder) {
    const Bundle document = documentOf(Rows({rowOf({"A", "B", "C"}), rowOf({"A"})}));
    EXPECT_THAT(attributesOf(document.grid()), ElementsAre("sf:ocnt=4", "sf:numcols=3", "sf:numrows=3"));
}

TEST_F(PagesCreatorTest, OfSeventyKeysSixtyBecomeColumns) {
    const auto writer = partWriter();
    writer->writePages(equalRows(2, rowOf(manyKeys(70))));
    EXPECT_EQ(writer->colNums(), 60);
    EXPECT_EQ(writer->getsfOcnt(), 140);
    EXPECT_THAT(writer->DicKeyArr(), SizeIs(70));
    const Bundle document = stagedIndex();
    EXPECT_THAT(attributesOf(document.grid()), ElementsAre("sf:ocnt=140", "sf:numcols=60", "sf:numrows=3"));
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kHeaderStyle), SizeIs(60));
    const Texts cells = cellsWithStyle(document.dataSource(), kDataStyle);
    ASSERT_THAT(cells, SizeIs(120));
    EXPECT_THAT(cells[0], StartsWith("197:"));
    EXPECT_THAT(cells[60], StartsWith("197:"));
}

TEST_F(PagesCreatorTest, NamesAmongTheLastKeysStillComeFirst) {
    Texts keys = manyKeys(65);
    keys.insert(keys.end(), {"First Name", "Last Name"});
    const Texts headers = cellsWithStyle(documentOf(Rows({rowOf(keys)})).dataSource(), kHeaderStyle);
    ASSERT_THAT(headers, SizeIs(60));
    EXPECT_EQ(headers[0], "0:First Name");
    EXPECT_EQ(headers[1], ":Last Name");
    EXPECT_EQ(headers[59], ":K57");
}

TEST_F(PagesCreatorTest, OneRowAndTwoColumnsFitTheTemplate) {
    const Bundle document = documentOf(Rows({rowOf({"A", "B"})}));
    EXPECT_STREQ(document.grid().attribute("sf:numrows").value(), "2");
    EXPECT_STREQ(document.rows().attribute("sf:count").value(), "2");
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 2U);
    EXPECT_STREQ(document.columns().attribute("sf:count").value(), "2");
    EXPECT_EQ(countOf(document.columns(), "sf:grid-column"), 2U);
}

TEST_F(PagesCreatorTest, OneRowAndFiveColumnsAddThreeColumns) {
    const Bundle document = documentOf(Rows({rowOf({"A", "B", "C", "D", "E"})}));
    EXPECT_STREQ(document.columns().attribute("sf:count").value(), "5");
    EXPECT_EQ(countOf(document.columns(), "sf:grid-column"), 5U);
    EXPECT_THAT(
        attributesOf(document.columns().last_child()),
        ElementsAre("sf:width=80.787406921386719", "sf:preferred-width=80.787406921386719", "sf:fitting-width=9"));
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 2U);
}

TEST_F(PagesCreatorTest, ThreeRowsAndOneColumnAddTwoRows) {
    const Bundle document = documentOf(equalRows(3, rowOf({"A"})));
    EXPECT_STREQ(document.rows().attribute("sf:count").value(), "4");
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 4U);
    EXPECT_THAT(attributesOf(document.rows().last_child()),
                ElementsAre("sf:height=38.196876525878906", "sf:preferred-height=38.196876525878906",
                            "sf:fitting-height=25", "sf:nc=1", "sf:ncoc=1"));
    EXPECT_STREQ(document.columns().attribute("sf:count").value(), "2");
    EXPECT_STREQ(document.grid().attribute("sf:numcols").value(), "1");
}

TEST_F(PagesCreatorTest, TwoRowsAndThreeColumnsAddBoth) {
    const Bundle document = documentOf(equalRows(2, rowOf({"A", "B", "C"})));
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 3U);
    EXPECT_EQ(countOf(document.columns(), "sf:grid-column"), 3U);
}

TEST_F(PagesCreatorTest, PageIsLandscapeUntilTheTableOutgrowsIt) {
    EXPECT_EQ(pageOf(0, 1), "841.889771 595.275574");
    EXPECT_EQ(pageOf(9, 12), "841.889771 595.275574");
    EXPECT_EQ(pageOf(10, 13), "935.889771 645.275574");
}

TEST_F(PagesCreatorTest, SizesOfThePageHaveSinglePrecision) {
    EXPECT_EQ(pageOf(60, 50'001), "5635.889648 2500045.250000");
}

TEST_F(PagesCreatorTest, PageOfTheDocumentCountsTheHeaderRow) {
    const auto page = [this](std::size_t rows, const Texts& keys) {
        return attributesOf(documentOf(equalRows(rows, rowOf(keys))).firstNamed("sl:slprint-info"));
    };
    EXPECT_THAT(page(11, manyKeys(9)),
                ElementsAre("sl:page-width=841.889771", "sl:page-height=595.275574", "sl:page-scale=1"));
    EXPECT_THAT(page(12, manyKeys(10)),
                ElementsAre("sl:page-width=935.889771", "sl:page-height=645.275574", "sl:page-scale=1"));
}

TEST_F(PagesCreatorTest, SizeReplacesWhatThePageSaid) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<page sl:page-scale=\"2\" sl:page-width=\"1\" a=\"b\" sl:page-height=\"1\"/>"));
    WritePagesFiles::init()->writeSize(document.first_child(), 1, 2);
    EXPECT_THAT(attributesOf(document.first_child()),
                ElementsAre("a=b", "sl:page-width=841.889771", "sl:page-height=595.275574", "sl:page-scale=1"));
}

TEST_F(PagesCreatorTest, NoRowsKeepTheCellsOfTheTemplateAndStateTheirCounts) {
    creatorOf(Rows())->initPagesFile();
    std::string index = fileText(indexPath());
    const std::string source = "<sf:datasource/>";
    index.replace(index.find(source), source.size(), "<sf:datasource><sf:t/></sf:datasource>");
    writeText(indexPath(), index);
    const auto writer = WritePagesFiles::init();
    writer->setFileCreatorDelegate(&delegate);
    writer->writePages(Rows());
    const Bundle document = stagedIndex();
    EXPECT_THAT(attributesOf(document.grid()), ElementsAre("sf:ocnt=0", "sf:numcols=0", "sf:numrows=1"));
    EXPECT_EQ(countOf(document.dataSource(), "sf:t"), 1U);
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 2U);
    EXPECT_THAT(delegate.progress, IsEmpty());
}

TEST_F(PagesCreatorTest, RowsWithoutKeysWriteNoHeader) {
    const Bundle document = documentOf(equalRows(2, Dictionary()));
    EXPECT_FALSE(document.dataSource().first_child());
    EXPECT_THAT(attributesOf(document.grid()), ElementsAre("sf:ocnt=0", "sf:numcols=0", "sf:numrows=3"));
}

TEST_F(PagesCreatorTest, GridIsTheFirstOfThatNameAmongItsSiblings) {
    creatorOf(Rows())->initPagesFile();
    std::string index = fileText(indexPath());
    const std::string before = "<sf:decoy><sf:grid><sf:datasource/></sf:grid></sf:decoy>";
    const std::string behind = "<sf:grid><sf:datasource/></sf:grid>";
    index.insert(index.find("<sf:grid "), before);
    const std::string end = "</sf:grid>";
    index.insert(index.rfind(end) + end.size(), behind);
    writeText(indexPath(), index);
    WritePagesFiles::init()->writePages(equalRows(3, rowOf({"A"})));
    const Bundle document = stagedIndex();
    const pugi::xml_node decoy = document.firstNamed("sf:decoy");
    EXPECT_FALSE(decoy.first_child().child("sf:datasource").first_child());
    const pugi::xml_node grid = decoy.next_sibling("sf:grid");
    EXPECT_THAT(cellsWithStyle(grid.child("sf:datasource"), kDataStyle), SizeIs(3));
    EXPECT_FALSE(grid.next_sibling("sf:grid").child("sf:datasource").first_child());
}

TEST_F(PagesCreatorTest, EmptyDataSourceElsewhereGetsNoCells) {
    creatorOf(Rows())->initPagesFile();
    std::string index = fileText(indexPath());
    const std::string columns = "<sf:columns ";  // at the depth of the grid's own data source
    const std::size_t grid = index.find("<sf:grid ");
    const std::size_t columnsAt = index.find(columns, grid);
    index.insert(columnsAt, "<sf:datasource/>");
    writeText(indexPath(), index);
    WritePagesFiles::init()->writePages(equalRows(3, rowOf({"A"})));
    const Bundle written = stagedIndex();
    EXPECT_FALSE(written.grid().first_child().first_child());
    EXPECT_THAT(cellsWithStyle(written.grid().last_child(), kDataStyle), SizeIs(3));
}

TEST_F(PagesCreatorTest, DocumentElementIsFoundBelowAnotherRoot) {
    creatorOf(Rows())->initPagesFile();
    std::string index = fileText(indexPath());
    index.insert(index.find("<sl:document"), "<other>");
    writeText(indexPath(), index + "</other>");
    WritePagesFiles::init()->writePages(equalRows(3, rowOf({"A"})));
    const Bundle document = stagedIndex();
    EXPECT_STREQ(document.root().name(), "other");
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle), SizeIs(3));
}

TEST_F(PagesCreatorTest, TemplateOfAnotherShapeKeepsWhatIsNotFound) {
    writeText(indexPath(), "<sl:document><a/><b/><c/><d/></sl:document>");
    WritePagesFiles::init()->writePages(equalRows(3, rowOf({"A"})));
    EXPECT_THAT(attributesOf(stagedIndex().root().last_child()),
                ElementsAre("sl:page-width=841.889771", "sl:page-height=595.275574", "sl:page-scale=1"));
}

TEST_F(PagesCreatorTest, ProgressIsPutIntoTheSliceOfTheFileForOneRowToo) {
    const auto creator = creatorOf(Rows({rowOf({"A"})}));
    creator->setCount(2);
    creator->setIndex(1);
    creator->startConvert();
    EXPECT_THAT(delegate.progress, ElementsAre(DoubleEq(0.6), DoubleEq(0.6), DoubleEq(0.9), DoubleEq(1)));
}

TEST_F(PagesCreatorTest, PartWriterHeedsNoRequestToStop) {
    const auto writer = partWriter();
    writer->setIsStop(true);
    writer->writePages(equalRows(2, rowOf({"A"})));
    EXPECT_THAT(cellsWithStyle(stagedIndex().dataSource(), kDataStyle), SizeIs(2));
    EXPECT_THAT(delegate.progress, ElementsAre(DoubleEq(0.2), DoubleEq(0.5), DoubleEq(0.8)));
}

TEST_F(PagesCreatorTest, StoppedDocumentIsNotPackedAndItsStageFolderStays) {
    const auto creator = creatorOf(equalRows(2, rowOf({"A"})));
    creator->setIsStop(true);
    creator->startConvert();
    EXPECT_THAT(delegate.completions, ElementsAre(false));
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_THAT(stageFolders(), ElementsAre("PgsStage"));
}

TEST_F(PagesCreatorTest, StageFolderHasTwoEmptyFoldersMoreThanTheTemplateAndIsRemoved) {
    const auto creator = creatorOf(Rows({rowOf({"A"})}));
    creator->startConvert();
    EXPECT_THAT(stageFolders(), IsEmpty());
    unpack(creator->writtenPath(), unpacked.path());
    EXPECT_TRUE(std::filesystem::is_empty(unpacked.path("mm/images")));
}

TEST_F(PagesCreatorTest, WithoutATemplateTheRestIsStillPacked) {
    const TemporaryFolder resources;
    std::filesystem::copy_file(resourceFolder() + "/zipBuildPages.sh", resources.path("zipBuildPages.sh"));
    setResourceFolder(resources.path());
    const LogLines log;
    const auto creator = creatorOf(equalRows(2, rowOf({"A"})));
    creator->startConvert();
    EXPECT_THAT(creator->failure(), HasSubstr("test.pages"));
    EXPECT_EQ(creator->writtenPath(), folder.path("Table.pages"));
}

}  // namespace
}  // namespace ZkMobileBackup
