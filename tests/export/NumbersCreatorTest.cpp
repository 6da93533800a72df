#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "export/NumbersCreator.h"
#include "export/WriteNumberFiles.h"
#include "platform/Xml.h"
#include "tests/export/BundleTesting.h"

namespace ZkMobileBackup {
namespace {

using testing::DoubleEq;
using testing::ElementsAre;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kHeaderStyle = "SFTCellStyle-105";
constexpr const char* kDataStyle = "SFTCellStyle-100";

class NumbersCreatorTest : public BundleTest {
protected:
    std::shared_ptr<NumbersCreator> creatorOf(const Rows& rows) {
        auto creator = NumbersCreator::initWithDictionary(rows, target());
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
    std::shared_ptr<WriteNumberFiles> partWriter() {
        creatorOf(Rows())->initNumsFile();
        auto writer = WriteNumberFiles::init();
        writer->setFileCreatorDelegate(&delegate);
        return writer;
    }
    std::string indexPath() const { return stagePath("NumStage/index.xml"); }
    Bundle stagedIndex() const { return Bundle(fileText(indexPath())); }
};

TEST_F(NumbersCreatorTest, WritesHeaderAndRowsIntoTheGridOfTheTemplate) {
    const Bundle document = documentOf(Rows({rowOf({"A", "B"}, "1"), rowOf({"A", "B"}, "2")}));
    EXPECT_EQ(folder.names(), Texts{"Table.numbers"});
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kHeaderStyle), ElementsAre("0:A", ":B"));
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle), ElementsAre("255:a1", ":b1", "255:a2", ":b2"));
    EXPECT_THAT(attributesOf(document.dataSource()), ElementsAre("sfa:ID=SFTConcreteTableDataSource-0"));
    EXPECT_EQ(countOf(document.grid(), "sf:datasource"), 1U);
    EXPECT_STREQ(document.grid().last_child().name(), "sf:datasource");
}

TEST_F(NumbersCreatorTest, PartIsPrettyPrintedFromItsFirstLineToItsLast) {
    const Bundle document = documentOf(Rows({rowOf({"A"}), rowOf({"A"})}));
    EXPECT_TRUE(document.text().starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ls:document "));
    pugi::xml_document again;
    ASSERT_TRUE(again.load_string(document.text().c_str(), pugi::parse_default | pugi::parse_declaration));
    EXPECT_EQ(prettyPrinted(again), document.text());
}

TEST_F(NumbersCreatorTest, NamesStandInFront) {
    const Rows rows = equalRows(2, rowOf({"Last Name", "Phone", "First Name"}));
    EXPECT_THAT(cellsWithStyle(documentOf(rows).dataSource(), kHeaderStyle),
                ElementsAre("0:First Name", ":Last Name", ":Phone"));
}

TEST_F(NumbersCreatorTest, LastNameComesSecondWhateverStandsFirst) {
    const Rows rows = equalRows(2, rowOf({"Phone", "Last Name"}));
    EXPECT_THAT(cellsWithStyle(documentOf(rows).dataSource(), kHeaderStyle), ElementsAre("0:Phone", ":Last Name"));
}

TEST_F(NumbersCreatorTest, ColumnsAreTheUnionOfKeysInTheOrderOfTheirFirstRow) {
    const Bundle document = documentOf(Rows({rowOf({"B"}), rowOf({"A", "B"}), rowOf({"C"})}));
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kHeaderStyle), ElementsAre("0:B", ":A", ":C"));
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle), ElementsAre("254:b", "256:b", ":a", "257:c"));
}

TEST_F(NumbersCreatorTest, FortyNineRowsFitTheTemplate) {
    const Bundle document = documentOf(equalRows(49, rowOf({"A"})));
    EXPECT_STREQ(document.grid().attribute("sf:numrows").value(), "50");
    EXPECT_STREQ(document.rows().attribute("sf:count").value(), "50");
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 50U);
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle), SizeIs(49));
}

TEST_F(NumbersCreatorTest, FiftyRowsAddAGridRow) {
    const Bundle document = documentOf(equalRows(50, rowOf({"A"})));
    EXPECT_STREQ(document.grid().attribute("sf:numrows").value(), "51");
    EXPECT_STREQ(document.rows().attribute("sf:count").value(), "51");
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 51U);
    EXPECT_THAT(attributesOf(document.rows().last_child()), ElementsAre("sf:height=14.25", "sf:fitting-height=14.25"));
}

TEST_F(NumbersCreatorTest, ManyRowsAllHaveAGridRow) {
    const Bundle document = documentOf(equalRows(1000, rowOf({"A"})));
    EXPECT_EQ(countOf(document.rows(), "sf:grid-row"), 1001U);
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle), SizeIs(1000));
}

TEST_F(NumbersCreatorTest, ColumnsStayThoseOfTheTemplate) {
    const Bundle document = documentOf(equalRows(2, rowOf(manyKeys(70))));
    EXPECT_EQ(countOf(document.columns(), "sf:grid-column"), 256U);
    EXPECT_STREQ(document.grid().attribute("sf:numcols").value(), "256");
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kHeaderStyle), SizeIs(70));
}

TEST_F(NumbersCreatorTest, OneRowMakesAHeaderAndARow) {
    const Bundle document = documentOf(Rows({rowOf({"Phone", "Last Name", "First Name"})}));
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kHeaderStyle),
                ElementsAre("0:First Name", ":Phone", ":Last Name"));
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle), ElementsAre("254:f", ":p", ":l"));
    EXPECT_THAT(attributesOf(document.dataSource()), ElementsAre("sfa:ID=SFTConcreteTableDataSource-0"));
    EXPECT_STREQ(document.grid().attribute("sf:numrows").value(), "50");
}

TEST_F(NumbersCreatorTest, OneRowLeavesTheColumnKeysEmpty) {
    const auto writer = partWriter();
    writer->writeNumbers(Rows({rowOf({"A", "B"})}));
    EXPECT_THAT(writer->DicKeyArr(), IsEmpty());
    EXPECT_THAT(writer->getAllKey(), ElementsAre("A", "B"));
}

TEST_F(NumbersCreatorTest, SeveralRowsSettleTheColumnKeys) {
    const auto writer = partWriter();
    writer->writeNumbers(Rows({rowOf({"A"}), rowOf({"First Name"})}));
    EXPECT_THAT(writer->DicKeyArr(), ElementsAre("First Name", "A"));
    EXPECT_THAT(writer->getAllKey(), ElementsAre("A", "First Name"));
}

TEST_F(NumbersCreatorTest, OneRowWithoutKeysEmptiesTheTable) {
    const Bundle document = documentOf(Rows({Dictionary()}));
    EXPECT_THAT(attributesOf(document.dataSource()), ElementsAre("sfa:ID=SFTConcreteTableDataSource-0"));
    EXPECT_FALSE(document.dataSource().first_child());
}

TEST_F(NumbersCreatorTest, NoRowsRewriteThePartWithTheTableOfTheTemplate) {
    const auto writer = partWriter();
    pugi::xml_document before;
    ASSERT_TRUE(before.load_file(indexPath().c_str(), pugi::parse_default | pugi::parse_declaration));
    EXPECT_NE(fileText(indexPath()), prettyPrinted(before));
    writer->writeNumbers(Rows());
    EXPECT_EQ(fileText(indexPath()), prettyPrinted(before));
    EXPECT_THAT(delegate.progress, IsEmpty());
}

TEST_F(NumbersCreatorTest, VersionIsSetWhateverTheTemplateSays) {
    for (const char* declaration : {"", "<?xml version=\"1.1\"?>"}) {
        writeText(indexPath(), std::string(declaration) + "<ls:document/>");
        WriteNumberFiles::init()->writeNumbers(Rows());
        EXPECT_EQ(fileText(indexPath()), "<?xml version=\"1.0\"?>\n<ls:document></ls:document>\n");
    }
}

TEST_F(NumbersCreatorTest, PositionsInTheTemplateCountElementsOnly) {
    creatorOf(Rows())->initNumsFile();
    std::string index = fileText(indexPath());
    for (const std::string element : {"<ls:workspace-array>", "<sf:grid ", "<sf:columns ", "<sf:layers>"}) {
        index.insert(index.find(element), "<!-- a comment --> ");
    }
    writeText(indexPath(), index);
    WriteNumberFiles::init()->writeNumbers(equalRows(50, rowOf({"A"})));
    EXPECT_STREQ(stagedIndex().rows().attribute("sf:count").value(), "51");
    EXPECT_THAT(cellsWithStyle(stagedIndex().dataSource(), kDataStyle), SizeIs(50));
}

TEST_F(NumbersCreatorTest, GridIsTheFirstOfThatNameAmongItsSiblings) {
    creatorOf(Rows())->initNumsFile();
    std::string index = fileText(indexPath());
    const std::string before = "<sf:decoy><sf:grid><sf:datasource/></sf:grid></sf:decoy>";
    const std::string behind = "<sf:grid><sf:datasource/></sf:grid>";
    index.insert(index.find("<sf:grid "), before);
    const std::string end = "</sf:grid>";
    index.insert(index.rfind(end) + end.size(), behind);
    writeText(indexPath(), index);
    WriteNumberFiles::init()->writeNumbers(equalRows(3, rowOf({"A"})));
    const Bundle document = stagedIndex();
    const pugi::xml_node decoy = document.firstNamed("sf:decoy");
    EXPECT_FALSE(decoy.first_child().child("sf:datasource").first_child());
    const pugi::xml_node grid = decoy.next_sibling("sf:grid");
    EXPECT_THAT(cellsWithStyle(grid.child("sf:datasource"), kDataStyle), SizeIs(3));
    EXPECT_FALSE(grid.next_sibling("sf:grid").child("sf:datasource").first_child());
}

TEST_F(NumbersCreatorTest, EmptyDataSourceElsewhereGetsNoCells) {
    creatorOf(Rows())->initNumsFile();
    std::string index = fileText(indexPath());
    const std::string columns = "<sf:columns ";  // at the depth of the grid's own data source
    const std::size_t grid = index.find("<sf:grid ");
    const std::size_t columnsAt = index.find(columns, grid);
    index.insert(columnsAt, "<sf:datasource/>");
    writeText(indexPath(), index);
    WriteNumberFiles::init()->writeNumbers(equalRows(3, rowOf({"A"})));
    const Bundle written = stagedIndex();
    EXPECT_FALSE(written.grid().first_child().first_child());
    EXPECT_THAT(cellsWithStyle(written.grid().last_child(), kDataStyle), SizeIs(3));
}

TEST_F(NumbersCreatorTest, DocumentElementIsFoundBelowAnotherRoot) {
    creatorOf(Rows())->initNumsFile();
    std::string index = fileText(indexPath());
    index.insert(index.find("<ls:document"), "<other>");
    writeText(indexPath(), index + "</other>");
    WriteNumberFiles::init()->writeNumbers(equalRows(3, rowOf({"A"})));
    const Bundle document = stagedIndex();
    EXPECT_STREQ(document.root().name(), "other");
    EXPECT_THAT(cellsWithStyle(document.dataSource(), kDataStyle), SizeIs(3));
}

TEST_F(NumbersCreatorTest, TemplateOfAnotherShapeIsLeftAsItIs) {
    writeText(indexPath(), "<ls:document><a/><b/></ls:document>");
    const auto writer = WriteNumberFiles::init();
    writer->writeNumbers(equalRows(60, rowOf({"A"})));
    EXPECT_EQ(fileText(indexPath()), "<?xml version=\"1.0\"?>\n<ls:document>\n\t<a></a>\n\t<b></b>\n</ls:document>\n");
}

TEST_F(NumbersCreatorTest, ProgressRunsFromTheSkeletonOverTheRowsToTheFile) {
    creatorOf(equalRows(2, rowOf({"A"})))->startConvert();
    EXPECT_THAT(delegate.progress,
                ElementsAre(DoubleEq(0.2), DoubleEq(0.2), DoubleEq(0.5), DoubleEq(0.8), DoubleEq(1)));
    EXPECT_THAT(delegate.completions, IsEmpty());
}

TEST_F(NumbersCreatorTest, ProgressOfSeveralRowsIsPutIntoTheSliceOfTheFile) {
    const auto creator = creatorOf(equalRows(2, rowOf({"A"})));
    creator->setCount(2);
    creator->setIndex(1);
    creator->startConvert();
    EXPECT_THAT(delegate.progress,
                ElementsAre(DoubleEq(0.6), DoubleEq(0.6), DoubleEq(0.75), DoubleEq(0.9), DoubleEq(1)));
}

TEST_F(NumbersCreatorTest, ProgressOfOneRowIgnoresTheBatch) {
    const auto creator = creatorOf(Rows({rowOf({"A"})}));
    creator->setCount(2);
    creator->setIndex(1);
    creator->startConvert();
    EXPECT_THAT(delegate.progress, ElementsAre(DoubleEq(0.6), DoubleEq(0.2), DoubleEq(0.8), DoubleEq(1)));
}

TEST_F(NumbersCreatorTest, RequestToStopNeverReachesThePartWriter) {
    const auto creator = creatorOf(equalRows(3, rowOf({"A"})));
    creator->setIsStop(true);
    creator->startConvert();
    EXPECT_THAT(delegate.progress, SizeIs(5));
    EXPECT_THAT(cellsWithStyle(stagedIndex().dataSource(), kDataStyle), SizeIs(3));
    EXPECT_THAT(delegate.completions, ElementsAre(false));
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_THAT(stageFolders(), ElementsAre("NumStage"));
}

TEST_F(NumbersCreatorTest, PartWriterOfSeveralRowsHeedsItsOwnFlag) {
    const auto writer = partWriter();
    writer->setIsStop(true);
    writer->writeNumbers(equalRows(2, rowOf({"A"})));
    EXPECT_THAT(delegate.progress, IsEmpty());
    EXPECT_THAT(writer->DicKeyArr(), IsEmpty());
    EXPECT_EQ(countOf(stagedIndex().grid(), "sf:datasource"), 1U);
    EXPECT_FALSE(stagedIndex().dataSource().first_child());
}

TEST_F(NumbersCreatorTest, PartWriterOfOneRowHeedsNoFlag) {
    const auto writer = partWriter();
    writer->setIsStop(true);
    writer->writeNumbers(Rows({rowOf({"A"})}));
    EXPECT_THAT(cellsWithStyle(stagedIndex().dataSource(), kDataStyle), SizeIs(1));
}

TEST_F(NumbersCreatorTest, StageFolderHasTwoEmptyFoldersMoreThanTheTemplateAndIsRemoved) {
    writeText(stagePath("NumStage/left behind"), "by a stopped run");
    const auto creator = creatorOf(Rows({rowOf({"A"})}));
    creator->initNumsFile();
    EXPECT_TRUE(std::filesystem::is_directory(stagePath("NumStage/mm/images")));
    EXPECT_FALSE(std::filesystem::exists(stagePath("NumStage/left behind")));
    creator->startConvert();
    EXPECT_THAT(stageFolders(), IsEmpty());
    unpack(creator->writtenPath(), unpacked.path());
    EXPECT_TRUE(std::filesystem::is_empty(unpacked.path("mm/images")));
}

TEST_F(NumbersCreatorTest, DocumentTakesAFreeName) {
    folder.addFile("Table.numbers");
    creatorOf(Rows({rowOf({"A"})}))->startConvert();
    EXPECT_EQ(folder.names(), (Texts{"Table(0).numbers", "Table.numbers"}));
    EXPECT_EQ(fileText(folder.path("Table.numbers")), "there before");
}

TEST_F(NumbersCreatorTest, WithoutATemplateTheRestIsStillPacked) {
    const TemporaryFolder resources;
    std::filesystem::copy_file(resourceFolder() + "/zipBuildNumbers.sh", resources.path("zipBuildNumbers.sh"));
    setResourceFolder(resources.path());
    const LogLines log;
    const auto creator = creatorOf(equalRows(2, rowOf({"A"})));
    creator->startConvert();
    EXPECT_THAT(creator->failure(), HasSubstr("test.numbers"));
    EXPECT_EQ(creator->writtenPath(), folder.path("Table.numbers"));
    EXPECT_THAT(delegate.progress, ElementsAre(DoubleEq(0.2), DoubleEq(1)));
}

TEST_F(NumbersCreatorTest, FailureOfThePartWriterIsTheCreatorsAndLoggedOnce) {
    const TemporaryFolder resources;
    for (const char* file : {"zipBuildNumbers.sh", "test.numbers"}) {
        std::filesystem::copy_file(resourceFolder() + "/" + file, resources.path(file));
    }
    const std::string otherPart = resources.path("note.txt");
    writeText(otherPart, "not the part");
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(resources.path("test.numbers")));
    ASSERT_TRUE(archive->addFileToZip(otherPart, "note.txt"));
    ASSERT_TRUE(archive->CloseZipFile2());
    setResourceFolder(resources.path());
    const LogLines log;
    const auto creator = creatorOf(Rows({rowOf({"A"})}));
    creator->startConvert();
    EXPECT_THAT(creator->failure(), HasSubstr("NumStage/index.xml"));
    EXPECT_THAT(log.lines(), SizeIs(1));
}

}  // namespace
}  // namespace ZkMobileBackup
