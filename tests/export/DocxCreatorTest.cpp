#include <algorithm>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "export/DocxCreator.h"
#include "export/PackagePart.h"
#include "export/TableInsert.h"
#include "platform/XmlStream.h"
#include "tests/export/PackageTesting.h"

namespace ZkMobileBackup {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kWordNamespace = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";

Rows twoRows() {
    return Rows({Dictionary{{"A", "a1"}, {"B", "b1"}}, Dictionary{{"A", "a2"}, {"B", "b2"}}});
}

/// A row with `count` keys, K1 first, and their numbers.
Dictionary wideRow(int count) {
    Dictionary row;
    for (int key = 1; key <= count; ++key) row.set(fmt::format("K{}", key), std::to_string(key));
    return row;
}

Texts namesOfChildren(pugi::xml_node parent) {
    Texts names;
    for (const pugi::xml_node child : parent.children()) names.emplace_back(child.name());
    return names;
}

/// The element as text on one line, tags in the short form.
std::string printed(pugi::xml_node element) {
    std::ostringstream text;
    element.print(text, "", pugi::format_raw);
    return text.str();
}

/// The document as read back.
class WordDocument {
public:
    explicit WordDocument(const std::string& text) : text_(text) {
        EXPECT_TRUE(document_.load_string(text.c_str(), pugi::parse_default | pugi::parse_ws_pcdata_single));
    }
    const std::string& text() const { return text_; }
    pugi::xml_node body() const { return document_.child("w:document").child("w:body"); }
    pugi::xml_node table() const { return body().child("w:tbl"); }
    pugi::xml_node tableProperties() const { return table().child("w:tblPr"); }
    std::size_t gridColumns() const { return namesOfChildren(table().child("w:tblGrid")).size(); }
    /// Texts of the cells, row by row, counted from the header row.
    std::vector<Texts> texts() const {
        std::vector<Texts> rows;
        for (const pugi::xml_node row : table().children("w:tr")) {
            Texts& texts = rows.emplace_back();
            for (const pugi::xml_node cell : row.children("w:tc")) {
                texts.emplace_back(cell.child("w:p").child("w:r").child("w:t").text().get());
            }
        }
        return rows;
    }

private:
    std::string text_;
    pugi::xml_document document_;
};

class DocxCreatorTest : public PackageTest {
protected:
    std::string notesPath() const { return folder.path("Notes"); }
    std::shared_ptr<DocxCreator> creatorOf(Rows rows, Profile profile = Profile::kLegacy) {
        auto creator = DocxCreator::initWithDictionary(std::move(rows), notesPath());
        creator->setFileCreatorDelegate(&delegate);
        creator->setProfile(profile);
        return creator;
    }
    std::map<std::string, std::string> packageOf(Rows rows, Profile profile = Profile::kLegacy) {
        const auto creator = creatorOf(std::move(rows), profile);
        creator->startConvert();
        EXPECT_EQ(creator->failure(), "");
        return partsOf(creator->writtenPath());
    }
    WordDocument documentOf(Rows rows, Profile profile = Profile::kLegacy) {
        return WordDocument(packageOf(std::move(rows), profile)["word/document.xml"]);
    }
    std::string stagedPart(const std::string& name) const { return fileText(stagePath("DocStage/" + name)); }
};

std::string cell(const std::string& text) {
    std::string border;
    for (const char* side : {"top", "left", "bottom", "right"}) {
        border += fmt::format(
            "\t\t\t\t\t\t\t<w:{0} w:val=\"single\" w:sz=\"12\" w:space=\"0\" w:color=\"000000\"></w:{0}>\n", side);
    }
    return "\t\t\t\t<w:tc>\n"
           "\t\t\t\t\t<w:tcPr>\n"
           "\t\t\t\t\t\t<w:tcW w:w=\"1130\" w:type=\"dxa\"></w:tcW>\n"
           "\t\t\t\t\t\t<w:tcMar>\n"
           "\t\t\t\t\t\t\t<w:left w:w=\"0\" w:type=\"dxa\"></w:left>\n"
           "\t\t\t\t\t\t\t<w:right w:w=\"0\" w:type=\"dxa\"></w:right>\n"
           "\t\t\t\t\t\t</w:tcMar>\n"
           "\t\t\t\t\t\t<w:tcBorders>\n" +
           border +
           "\t\t\t\t\t\t</w:tcBorders>\n"
           "\t\t\t\t\t\t<w:shd w:val=\"clear\" w:color=\"auto\" w:fill=\"auto\"></w:shd>\n"
           "\t\t\t\t\t\t<w:vAlign w:val=\"center\"></w:vAlign>\n"
           "\t\t\t\t\t</w:tcPr>\n"
           "\t\t\t\t\t<w:p w:rsidR=\"005A76FB\" w:rsidRDefault=\"005A76FB\" w:rsidP=\"005A76FB\">\n"
           "\t\t\t\t\t\t<w:r>\n"
           "\t\t\t\t\t\t\t<w:t xml:space=\"preserve\">" +
           text +
           "</w:t>\n"
           "\t\t\t\t\t\t</w:r>\n"
           "\t\t\t\t\t</w:p>\n"
           "\t\t\t\t</w:tc>\n";
}

std::string tableHead() {
    std::string borders;
    for (const char* side : {"top", "left", "bottom", "right", "insideH", "insideV"}) {
        borders +=
            fmt::format("\t\t\t\t\t<w:{0} w:val=\"none\" w:sz=\"0\" w:space=\"0\" w:color=\"auto\"></w:{0}>\n", side);
    }
    std::string grid;
    for (int column = 0; column < 28; ++column) grid += "\t\t\t\t<w:gridCol w:w=\"200\"></w:gridCol>\n";
    return "\t\t\t<w:tblPr w:leftFromText=\"180\">\n"
           "\t\t\t\t<w:tblStyle w:val=\"a6\"></w:tblStyle>\n"
           "\t\t\t\t<w:tblpPr w:rightFromText=\"180\" w:vertAnchor=\"page\" w:horzAnchor=\"page\" w:tblpX=\"180\" "
           "w:tblpY=\"180\"></w:tblpPr>\n"
           "\t\t\t\t<w:tblW w:w=\"0\" w:type=\"auto\"></w:tblW>\n"
           "\t\t\t\t<w:tblLayout w:type=\"fixed\"></w:tblLayout>\n"
           "\t\t\t\t<w:tblBorders>\n" +
           borders +
           "\t\t\t\t</w:tblBorders>\n"
           "\t\t\t\t<w:tblLook w:val=\"0000\"></w:tblLook>\n"
           "\t\t\t</w:tblPr>\n"
           "\t\t\t<w:tblGrid>\n" +
           grid + "\t\t\t</w:tblGrid>\n";
}

constexpr const char* kSpacer =
    "\t\t<w:p w:rsidR=\"005A76FB\" w:rsidRDefault=\"005A76FB\" w:rsidP=\"005A76FB\">\n"
    "\t\t\t<w:pPr>\n"
    "\t\t\t\t<w:spacing w:before=\"0\" w:after=\"0\" w:line=\"240\" w:lineRule=\"exact\"></w:spacing>\n"
    "\t\t\t</w:pPr>\n"
    "\t\t</w:p>\n";

constexpr const char* kSection =
    "\t\t<w:sectPr w:rsidR=\"005A76FB\" w:rsidSect=\"005A76FB\">\n"
    "\t\t\t<w:pgSz w:w=\"31906\" w:h=\"26838\"></w:pgSz>\n"
    "\t\t\t<w:pgMar w:top=\"0\" w:right=\"0\" w:bottom=\"0\" w:left=\"0\" w:header=\"851\" w:footer=\"992\" "
    "w:gutter=\"0\"></w:pgMar>\n"
    "\t\t\t<w:cols w:num=\"1\" w:equalWidth=\"0\">\n"
    "\t\t\t\t<w:col w:w=\"11900\" w:space=\"0\"></w:col>\n"
    "\t\t\t</w:cols>\n"
    "\t\t\t<w:docGrid w:type=\"lines\" w:linePitch=\"312\"></w:docGrid>\n"
    "\t\t</w:sectPr>\n";

constexpr const char* kBegin =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\">\n"
    "\t<w:body>\n";
constexpr const char* kEnd = "\t</w:body>\n</w:document>\n";

TEST_F(DocxCreatorTest, WritesTheWholeDocument) {
    const WordDocument document = documentOf(Rows({Dictionary{{"Name", "Ann & <Bo>"}, {"Phone", Array{"12", "34"}}}}));
    const std::string rowBegin = "\t\t\t<w:tr w:rsidR=\"00AD10A2\" w:rsidTr=\"00CB73A4\">\n";
    EXPECT_EQ(document.text(), std::string(kBegin) + kSpacer + "\t\t<w:tbl>\n" + tableHead() + rowBegin +
                                   "\t\t\t\t<w:trPr>\n"
                                   "\t\t\t\t\t<w:trHeight w:hRule=\"exact\" w:val=\"700\"></w:trHeight>\n"
                                   "\t\t\t\t</w:trPr>\n" +
                                   cell("Phone") + cell("Name") + "\t\t\t</w:tr>\n" + rowBegin +
                                   cell("  \r\n12  \r\n34") + cell("Ann &amp; &lt;Bo&gt;") +
                                   "\t\t\t</w:tr>\n\t\t</w:tbl>\n" + kSection + kEnd);
}

TEST_F(DocxCreatorTest, NoRowsMakeNoTable) {
    EXPECT_EQ(documentOf(Rows()).text(), std::string(kBegin) + kSpacer + kSection + kEnd);
}

TEST_F(DocxCreatorTest, ColumnsStandInReverseOrderOfTheKeys) {
    EXPECT_EQ(documentOf(twoRows()).texts(), (std::vector<Texts>{{"B", "A"}, {"b1", "a1"}, {"b2", "a2"}}));
}

TEST_F(DocxCreatorTest, KeysOfEveryRowMakeColumns) {
    const Rows rows({Dictionary{{"A", "a1"}}, Dictionary{{"B", "b2"}, {"A", "a2"}}});
    EXPECT_EQ(documentOf(rows).texts(), (std::vector<Texts>{{"B", "A"}, {"", "a1"}, {"b2", "a2"}}));
}

TEST_F(DocxCreatorTest, OfThirtyKeysTheFirstTwentyEightAreWrittenBackwards) {
    Texts keys;
    Texts numbers;
    for (int key = 28; key >= 1; --key) {
        keys.push_back(fmt::format("K{}", key));
        numbers.push_back(std::to_string(key));
    }
    EXPECT_EQ(documentOf(Rows({wideRow(30)})).texts(), (std::vector<Texts>{keys, numbers}));
}

TEST_F(DocxCreatorTest, TwentyEightKeysAreAllWritten) {
    const auto texts = documentOf(Rows({wideRow(28)})).texts();
    EXPECT_EQ(texts[0].size(), 28U);
    EXPECT_EQ(texts[0].back(), "K1");
}

TEST_F(DocxCreatorTest, RowLackingAKeyHasACellWithAnEmptyText) {
    const WordDocument document = documentOf(Rows({Dictionary{{"A", "a1"}}, Dictionary{{"B", "b2"}}}));
    EXPECT_NE(document.text().find(cell("")), std::string::npos);
    EXPECT_EQ(document.texts()[1], (Texts{"", "a1"}));
}

TEST_F(DocxCreatorTest, ValuesThatAreNoTextsMakeEmptyCells) {
    const Rows rows({Dictionary{{"A", 7}, {"B", Value()}, {"C", Array{}}}});
    EXPECT_EQ(documentOf(rows).texts()[1], (Texts{"", "", ""}));
}

TEST_F(DocxCreatorTest, RowsWithoutKeysHaveNoCells) {
    EXPECT_EQ(documentOf(Rows({Dictionary(), Dictionary()})).texts(), (std::vector<Texts>{{}, {}, {}}));
}

TEST_F(DocxCreatorTest, GridHasTwentyEightColumnsWhateverTheTable) {
    EXPECT_EQ(documentOf(Rows({wideRow(3)})).gridColumns(), 28U);
    EXPECT_EQ(documentOf(Rows({wideRow(40)})).gridColumns(), 28U);
}

TEST_F(DocxCreatorTest, OnlyTheHeaderRowHasAHeight) {
    std::vector<bool> heights;
    const WordDocument document = documentOf(twoRows());
    for (const pugi::xml_node row : document.table().children("w:tr")) heights.push_back(row.child("w:trPr"));
    EXPECT_EQ(heights, (std::vector<bool>{true, false, false}));
}

TEST_F(DocxCreatorTest, TextsReadBackAsTheyAre) {
    const Texts texts = {"  blanks  ",
                         "tab\there",
                         "line\nbreak",
                         "]]> <![CDATA[ &amp; \"quoted\" 'too'",
                         "\u05E9\u05DC\u05D5\u05DD \u0645\u0631\u062D\u0628\u0627",
                         "\U0001F468\u200D\U0001F469\u200D\U0001F467 e\u0301 \U0010FFFD",
                         std::string(std::size_t{1} << 20, 'x')};
    std::vector<Dictionary> rows;
    for (const std::string& text : texts) rows.push_back(Dictionary{{text, text}});
    const auto found = documentOf(Rows(rows)).texts();
    ASSERT_EQ(found.size(), texts.size() + 1);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::size_t column = texts.size() - 1 - i;
        EXPECT_EQ(found[0][column], texts[i]);
        EXPECT_EQ(found[i + 1][column], texts[i]);
    }
}

TEST_F(DocxCreatorTest, CharactersThatXmlCannotCarryAreLeftOut) {
    const Rows rows({Dictionary{{"A", std::string("a\0b\x01\x1F\xEF\xBF\xBF\xC0z", 10)}}});
    EXPECT_EQ(documentOf(rows).texts()[1], Texts{"abz"});
}

TEST_F(DocxCreatorTest, PictureTypesStandBehindTheFirstContentType) {
    pugi::xml_document types;
    ASSERT_TRUE(types.load_string(packageOf(twoRows())["[Content_Types].xml"].c_str()));
    Texts extensions;
    Texts contentTypes;
    for (const pugi::xml_node entry : types.child("Types").children("Default")) {
        extensions.emplace_back(entry.attribute("Extension").value());
        contentTypes.emplace_back(entry.attribute("ContentType").value());
    }
    ASSERT_EQ(extensions, (Texts{"rels", "png", "jpeg", "xml"}));
    EXPECT_EQ(contentTypes[1], "image/png");
    EXPECT_EQ(contentTypes[2], "image/jpeg");
}

TEST_F(DocxCreatorTest, StageHoldsTheTemplateWithAnEmptyBodyAndEmptyFolders) {
    const auto creator = creatorOf(twoRows());
    creator->initDocxFile();
    const WordDocument document(stagedPart("word/document.xml"));
    EXPECT_FALSE(document.body().first_child());
    EXPECT_TRUE(document.body());
    for (const char* name : {"word/media", "mm", "mm/images"}) {
        EXPECT_TRUE(std::filesystem::is_directory(stagePath("DocStage/" + std::string(name)))) << name;
    }
    EXPECT_TRUE(std::filesystem::is_empty(stagePath("DocStage/mm/images")));
    EXPECT_NE(stagedPart("[Content_Types].xml").find("image/png"), std::string::npos);
}

TEST_F(DocxCreatorTest, BodyOfTheTemplateIsReplaced) {
    const TemporaryFolder resources;
    const TemporaryFolder parts;
    writeText(parts.path("document.xml"),
              fmt::format("<w:document xmlns:w=\"{}\"><w:body><w:p/><!-- x --> text <w:sectPr/></w:body></w:document>",
                          kWordNamespace));
    writeText(parts.path("types.xml"), "<Types><Override/></Types>");
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(resources.path("test.docx")));
    ASSERT_TRUE(archive->addFileToZip(parts.path("document.xml"), "word/document.xml"));
    ASSERT_TRUE(archive->addFileToZip(parts.path("types.xml"), "[Content_Types].xml"));
    ASSERT_TRUE(archive->CloseZipFile2());
    std::filesystem::copy(resourceFolder() + "/zipBuildWord.sh", resources.path("zipBuildWord.sh"));
    setResourceFolder(resources.path());
    auto package = packageOf(twoRows());
    EXPECT_EQ(namesOfChildren(WordDocument(package["word/document.xml"]).body()), (Texts{"w:p", "w:tbl", "w:sectPr"}));
    pugi::xml_document types;
    ASSERT_TRUE(types.load_string(package["[Content_Types].xml"].c_str()));
    EXPECT_EQ(namesOfChildren(types.child("Types")), (Texts{"Override", "Default", "Default"}));
}

TEST_F(DocxCreatorTest, TemplateWithoutABodyIsAFailureAndPackedAsItIs) {
    const TemporaryFolder resources;
    writeText(resources.path("document.xml"), "<document/>");
    const auto archive = ZipArchive::init();
    ASSERT_TRUE(archive->CreateZipFile2(resources.path("test.docx")));
    ASSERT_TRUE(archive->addFileToZip(resources.path("document.xml"), "word/document.xml"));
    ASSERT_TRUE(archive->CloseZipFile2());
    std::filesystem::copy(resourceFolder() + "/zipBuildWord.sh", resources.path("zipBuildWord.sh"));
    setResourceFolder(resources.path());
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    EXPECT_NE(creator->failure().find("'w:body'"), std::string::npos) << creator->failure();
    EXPECT_EQ(partsOf(creator->writtenPath())["word/document.xml"], "<document/>");
}

TEST_F(DocxCreatorTest, EverythingElseComesFromTheTemplate) {
    const auto package = packageOf(twoRows());
    for (const char* name : {"_rels/.rels", "word/_rels/document.xml.rels", "word/styles.xml", "docProps/core.xml"}) {
        EXPECT_TRUE(package.contains(name)) << name;
    }
    EXPECT_NE(package.at("word/styles.xml").find("w:styleId=\"a6\""), std::string::npos);
}

TEST_F(DocxCreatorTest, ProgressRisesRowByRow) {
    creatorOf(twoRows())->startConvert();
    const std::vector<double> expected = {0.2, 0.2, 0.5, 0.8, 1.0};
    ASSERT_EQ(delegate.progress.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_DOUBLE_EQ(delegate.progress[i], expected[i]) << i;
    EXPECT_TRUE(delegate.completions.empty());
}

TEST_F(DocxCreatorTest, StopEndsTheTableBehindTheRowInHand) {
    const auto creator = creatorOf(twoRows());
    delegate.onProgress = [&](double process) {
        if (process > 0.4) creator->setIsStop(true);
    };
    creator->startConvert();
    const WordDocument document(stagedPart("word/document.xml"));
    EXPECT_EQ(document.texts(), (std::vector<Texts>{{"B", "A"}, {"b1", "a1"}}));
    EXPECT_EQ(delegate.completions, std::vector<bool>{false});
    EXPECT_EQ(folder.names(), Texts());
}

TEST_F(DocxCreatorTest, KeysAreTakenWhenTheHeaderRowIsMade) {
    const auto creator = creatorOf(Rows({Dictionary{{"A", "a1"}}, Dictionary{{"B", "b2"}, {"A", "a2"}}}));
    EXPECT_EQ(creator->getAllKey(), (Texts{"A", "B"}));
    EXPECT_TRUE(creator->DicKeyArr().empty());
    std::string text;
    XmlStream row(text, 0);
    row.begin("w:tr");
    creator->setHeadNode(row);
    EXPECT_EQ(creator->DicKeyArr(), (Texts{"A", "B"}));
}

TEST_F(DocxCreatorTest, TableOfFewerRowsIsWrittenAndCountsThem) {
    std::string text;
    XmlStream parent(text, 0);
    parent.begin("w:tbl");
    creatorOf(twoRows())->SetTable(parent, 1);
    parent.end();
    pugi::xml_document table;
    ASSERT_TRUE(table.load_string(text.c_str()));
    EXPECT_EQ(std::ranges::count(namesOfChildren(table.child("w:tbl")), "w:tr"), 2);
    ASSERT_EQ(delegate.progress.size(), 2U);
    EXPECT_DOUBLE_EQ(delegate.progress[1], 0.8);
}

TEST_F(DocxCreatorTest, EmptyParagraphHasTheLineThatIsAskedFor) {
    EXPECT_EQ(printed(creatorOf(Rows())->writeReturn("77")),
              "<w:p w:rsidR=\"005A76FB\" w:rsidRDefault=\"005A76FB\" w:rsidP=\"005A76FB\"><w:pPr><w:spacing "
              "w:before=\"0\" w:after=\"0\" w:line=\"77\" w:lineRule=\"exact\"/></w:pPr></w:p>");
}

TEST_F(DocxCreatorTest, ExistingDocumentIsKeptAndTheNextNameTaken) {
    folder.addFile("Notes.docx");
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), folder.path("Notes(0).docx"));
    EXPECT_EQ(folder.names(), (Texts{"Notes(0).docx", "Notes.docx"}));
    EXPECT_EQ(fileText(folder.path("Notes.docx")), "there before");
}

TEST_F(DocxCreatorTest, StandardFloatingTableHasAllItsAttributes) {
    const WordDocument document = documentOf(twoRows(), Profile::kStandard);
    EXPECT_FALSE(document.tableProperties().attribute("w:leftFromText"));
    EXPECT_EQ(printed(document.tableProperties().child("w:tblpPr")),
              "<w:tblpPr w:leftFromText=\"180\" w:rightFromText=\"180\" w:vertAnchor=\"page\" w:horzAnchor=\"page\" "
              "w:tblpX=\"180\" w:tblpY=\"180\"/>");
}

TEST_F(DocxCreatorTest, StandardPropertiesStandInTheOrderOfTheSchema) {
    const WordDocument document = documentOf(twoRows(), Profile::kStandard);
    EXPECT_EQ(namesOfChildren(document.tableProperties()),
              (Texts{"w:tblStyle", "w:tblpPr", "w:tblW", "w:tblBorders", "w:tblLayout", "w:tblLook"}));
    EXPECT_EQ(namesOfChildren(document.table().child("w:tr").child("w:tc").child("w:tcPr")),
              (Texts{"w:tcW", "w:tcBorders", "w:shd", "w:tcMar", "w:vAlign"}));
}

TEST_F(DocxCreatorTest, StandardGridIsThatOfTheTable) {
    const WordDocument document = documentOf(Rows({wideRow(3)}), Profile::kStandard);
    EXPECT_EQ(document.gridColumns(), 3U);
    EXPECT_STREQ(document.table().child("w:tblGrid").first_child().attribute("w:w").value(), "1130");
    EXPECT_EQ(documentOf(Rows({wideRow(30)}), Profile::kStandard).gridColumns(), 28U);
}

TEST_F(DocxCreatorTest, StandardTableIsAsWideAsThePage) {
    EXPECT_EQ(printed(documentOf(twoRows(), Profile::kStandard).tableProperties().child("w:tblW")),
              "<w:tblW w:w=\"31546\" w:type=\"dxa\"/>");
}

TEST_F(DocxCreatorTest, StandardHasAParagraphBehindTheTable) {
    EXPECT_EQ(namesOfChildren(documentOf(twoRows(), Profile::kStandard).body()),
              (Texts{"w:p", "w:tbl", "w:p", "w:sectPr"}));
}

TEST_F(DocxCreatorTest, StandardHasNoTableWithoutCells) {
    const Rows rows({Dictionary(), Dictionary()});
    EXPECT_EQ(namesOfChildren(documentOf(rows, Profile::kStandard).body()), (Texts{"w:p", "w:p", "w:sectPr"}));
    EXPECT_EQ(namesOfChildren(documentOf(rows).body()), (Texts{"w:p", "w:tbl", "w:sectPr"}));
}

TEST_F(DocxCreatorTest, ProfilesHaveTheSameTexts) {
    const Rows rows({wideRow(30), Dictionary{{"K3", "\t]]>\n"}}});
    EXPECT_EQ(documentOf(rows, Profile::kStandard).texts(), documentOf(rows, Profile::kLegacy).texts());
}

TEST(TableInsert, GridHasTheColumnsThatAreAskedForAndNoneBelowOne) {
    const auto insert = TableInsert::init();
    EXPECT_EQ(namesOfChildren(insert->getWtblGridNode(3)).size(), 3U);
    EXPECT_EQ(namesOfChildren(insert->getWtblGridNode(0)).size(), 0U);
    EXPECT_EQ(namesOfChildren(insert->getWtblGridNode(-1)).size(), 0U);
}

TEST(TableInsert, LeftDistanceIsMisplacedInLegacyDocuments) {
    const auto insert = TableInsert::init();
    EXPECT_STREQ(insert->getTblprNode().attribute("w:leftFromText").value(), "180");
    EXPECT_FALSE(insert->getTblprNode().child("w:tblpPr").attribute("w:leftFromText"));
}

}  // namespace
}  // namespace ZkMobileBackup
