#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/Resources.h"
#include "export/WriteXlsxFile.h"
#include "export/XlsxCreater.h"
#include "platform/Xml.h"
#include "tests/export/ExportTesting.h"
#include "tests/export/ZipTesting.h"
#include "tests/support/CommandRun.h"

namespace ZkMobileBackup {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kSheet = "xl/worksheets/sheet1.xml";
constexpr const char* kStrings = "xl/sharedStrings.xml";
constexpr const char* kRelationships = "xl/_rels/workbook.xml.rels";
constexpr const char* kTypeStart = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";

Rows twoRows() {
    return Rows({Dictionary{{"A", "a1"}, {"B", "b1"}}, Dictionary{{"A", "a2"}, {"B", "b2"}}});
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    const std::size_t found = text.find(what);
    EXPECT_NE(found, std::string::npos) << what << " in " << text;
    return found == std::string::npos ? text : text.replace(found, what.size(), with);
}

Texts attributeValues(pugi::xml_node parent, const char* name) {
    Texts values;
    for (const pugi::xml_node child : parent.children()) values.emplace_back(child.attribute(name).value());
    return values;
}

Texts childNames(pugi::xml_node parent) {
    Texts names;
    for (const pugi::xml_node child : parent.children()) names.emplace_back(child.name());
    return names;
}

/// One part as read back, line ends kept as they were written.
class Part {
public:
    explicit Part(const std::string& text) {
        constexpr unsigned kAsWritten = (pugi::parse_default | pugi::parse_ws_pcdata_single) & ~pugi::parse_eol;
        EXPECT_TRUE(document_.load_string(text.c_str(), kAsWritten)) << text;
    }
    pugi::xml_node root() const { return document_.document_element(); }

private:
    pugi::xml_document document_;
};

/// The parts of a finished workbook.
class Workbook {
public:
    explicit Workbook(const std::string& path) {
        const TemporaryFolder folder;
        EXPECT_TRUE(unpack(path, folder.path()).result) << path;
        files_ = filesBelow(folder.path());
    }
    Texts names() const {
        Texts names;
        for (const auto& [name, content] : files_) names.push_back(name);
        return names;
    }
    const std::string& text(const std::string& name) const { return files_.at(name); }
    Part part(const std::string& name) const { return Part(text(name)); }

    /// Texts of the cells row by row, looked up in the shared strings.
    std::vector<Texts> cells() const {
        Texts strings;
        const Part sharedStrings = part(kStrings);
        for (const pugi::xml_node string : sharedStrings.root().children())
            strings.emplace_back(string.child_value("t"));
        std::vector<Texts> rows;
        const Part sheet = part(kSheet);
        for (const pugi::xml_node row : sheet.root().child("sheetData").children()) {
            rows.emplace_back();
            for (const pugi::xml_node cell : row.children()) {
                rows.back().push_back(strings.at(std::stoul(cell.child_value("v"))));
            }
        }
        return rows;
    }
    /// References of the cells of one row, counted from the header row.
    Texts references(std::size_t row) const {
        const Part sheet = part(kSheet);
        const auto rows = sheet.root().child("sheetData").children();
        return attributeValues(*std::next(rows.begin(), static_cast<std::ptrdiff_t>(row)), "r");
    }

private:
    std::map<std::string, std::string> files_;
};

/// Documents and stage folders go to folders of the test's own; templates are those of the build unless replaced.
class XlsxTest : public testing::Test {
protected:
    XlsxTest() { setenv("XDG_DATA_HOME", data.path().c_str(), 1); }
    ~XlsxTest() override {
        setResourceFolder("");
        unsetenv("XDG_DATA_HOME");
    }

    std::string stagePath(const std::string& name) const { return data.path("ZkMobileBackup/XlsStage/" + name); }

    std::shared_ptr<XlsxCreater> creatorOf(Rows rows, Profile profile = Profile::kLegacy) {
        auto creator = XlsxCreater::initWithDictionary(std::move(rows), folder.path("Table"));
        creator->setFileCreatorDelegate(&delegate);
        creator->setProfile(profile);
        return creator;
    }
    Workbook workbookOf(Rows rows, Profile profile = Profile::kLegacy) {
        const auto creator = creatorOf(std::move(rows), profile);
        creator->startConvert();
        EXPECT_EQ(creator->failure(), "");
        return Workbook(creator->writtenPath());
    }

    /// Has the template hold `content` as one of its parts; without content the part is removed.
    void changeTemplate(const std::string& part, const std::string& content) {
        const TemporaryFolder parts;
        ASSERT_TRUE(unpack(resourceFolder() + "/test.xlsx", parts.path()).result);
        std::filesystem::remove(parts.path(part));
        if (!content.empty()) writeText(parts.path(part), content);
        const std::string command = "cd '" + parts.path() + "' && zip -q -r '" + resources.path("test.xlsx") + "' .";
        ASSERT_EQ(runCommand(command).status, 0);
        setResourceFolder(resources.path());
    }

    TemporaryFolder data;
    TemporaryFolder resources;
    ExportFolder folder;
    RecordingWriterDelegate delegate;
};

class XlsxCreaterTest : public XlsxTest {};

TEST_F(XlsxCreaterTest, WritesTheWholeSheet) {
    EXPECT_EQ(workbookOf(Rows({Dictionary{{"A", "a"}}})).text(kSheet),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
              "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
              "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">\n"
              "\t<dimension ref=\"A1:L111\"></dimension>\n"
              "\t<sheetViews>\n"
              "\t\t<sheetView tabSelected=\"1\" workbookViewId=\"0\"></sheetView>\n"
              "\t</sheetViews>\n"
              "\t<sheetFormatPr baseColWith=\"21\" defaultRowHeight=\"15\"></sheetFormatPr>\n"
              "\t<sheetData>\n"
              "\t\t<row r=\"1\" spans=\"1:87\">\n"
              "\t\t\t<c r=\"A1\" s=\"1\" t=\"s\">\n"
              "\t\t\t\t<v>0</v>\n"
              "\t\t\t</c>\n"
              "\t\t</row>\n"
              "\t\t<row r=\"2\" spans=\"1:87\">\n"
              "\t\t\t<c r=\"A2\" s=\"1\" t=\"s\">\n"
              "\t\t\t\t<v>1</v>\n"
              "\t\t\t</c>\n"
              "\t\t</row>\n"
              "\t</sheetData>\n"
              "\t<phoneticPr fontId=\"1\" type=\"noConversion\"></phoneticPr>\n"
              "\t<pageMargins left=\"0.7\" right=\"0.7\" top=\"0.75\" bottom=\"0.75\" header=\"0.3\" "
              "footer=\"0.3\"></pageMargins>\n"
              "\t<pageSetup paperSize=\"0\" orientation=\"portrait\" horizontalDpi=\"0\" verticalDpi=\"0\" "
              "copies=\"0\"></pageSetup>\n"
              "</worksheet>\n");
}

TEST_F(XlsxCreaterTest, WritesTheWholeSharedStrings) {
    EXPECT_EQ(workbookOf(Rows({Dictionary{{"A", "x & <y>"}}})).text(kStrings),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
              "<sst xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" count=\"2\" "
              "uniqueCount=\"2\">\n"
              "\t<si>\n"
              "\t\t<t xml:space=\"preserve\">A</t>\n"
              "\t\t<phoneticPr fontId=\"1\" type=\"noConversion\"></phoneticPr>\n"
              "\t</si>\n"
              "\t<si>\n"
              "\t\t<t xml:space=\"preserve\">x &amp; &lt;y&gt;</t>\n"
              "\t\t<phoneticPr fontId=\"1\" type=\"noConversion\"></phoneticPr>\n"
              "\t</si>\n"
              "</sst>\n");
}

TEST_F(XlsxCreaterTest, SheetNamesPrinterSettingsThatAreNeverWritten) {
    const Workbook workbook = workbookOf(twoRows());
    EXPECT_EQ(workbook.text("xl/worksheets/_rels/sheet1.xml.rels"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
              "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">\n"
              "\t<Relationship Id=\"rId1\" "
              "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/printerSettings\" "
              "Target=\"../slideLayouts/printerSettings1.bin\"></Relationship>\n"
              "</Relationships>\n");
    for (const std::string& name : workbook.names()) EXPECT_EQ(name.find("printerSettings"), std::string::npos);
}

TEST_F(XlsxCreaterTest, WorkbookHasOneSheetNamedPage1AtPosition3) {
    const Part workbook = workbookOf(twoRows()).part("xl/workbook.xml");
    EXPECT_EQ(childNames(workbook.root()), (Texts{"fileVersion", "workbookPr", "bookViews", "sheets", "definedNames"}));
    const pugi::xml_node sheets = workbook.root().child("sheets");
    EXPECT_EQ(childNames(sheets), Texts{"sheet"});
    EXPECT_EQ(attributeValues(sheets, "name"), Texts{"Page 1"});
    EXPECT_EQ(attributeValues(sheets, "sheetId"), Texts{"1"});
    EXPECT_EQ(attributeValues(sheets, "r:id"), Texts{"rId1"});
}

TEST_F(XlsxCreaterTest, RelationshipsArePlaceholdersReplacedAndTheRestKept) {
    const Part part = workbookOf(twoRows()).part(kRelationships);
    EXPECT_EQ(attributeValues(part.root(), "Id"), (Texts{"rId4", "rId1", "rId5"}));
    const std::string start = kTypeStart;
    EXPECT_EQ(attributeValues(part.root(), "Type"),
              (Texts{start + "styles", start + "worksheet", start + "sharedStrings"}));
    EXPECT_EQ(attributeValues(part.root(), "Target"),
              (Texts{"styles.xml", "worksheets/sheet1.xml", "sharedStrings.xml"}));
}

TEST_F(XlsxCreaterTest, NumberOfTheStringsRelationshipCountsThePlaceholders) {
    changeTemplate(kRelationships,
                   "<Relationships> <!-- no child --> <a/><b/><c/> <Relationship Id='x'/><Relationship Id='y'/> "
                   "<Relationship Id='z'/></Relationships>");
    EXPECT_EQ(attributeValues(workbookOf(twoRows()).part(kRelationships).root(), "Id"),
              (Texts{"x", "y", "z", "rId1", "rId7"}));
}

TEST_F(XlsxCreaterTest, FewerPlaceholdersThanThreeAreAllReplaced) {
    changeTemplate(kRelationships, "<Relationships><a/><b/></Relationships>");
    EXPECT_EQ(attributeValues(workbookOf(twoRows()).part(kRelationships).root(), "Id"), (Texts{"rId1", "rId3"}));
}

TEST_F(XlsxCreaterTest, ContentTypesArePlaceholdersReplacedAndTheRestKept) {
    const Part part = workbookOf(twoRows()).part("[Content_Types].xml");
    EXPECT_EQ(attributeValues(part.root(), "PartName"),
              (Texts{"", "", "/xl/workbook.xml", "/xl/styles.xml", "/docProps/core.xml", "/docProps/app.xml",
                     "/xl/worksheets/sheet1.xml", "/xl/sharedStrings.xml"}));
    const std::string start = "application/vnd.openxmlformats-officedocument.spreadsheetml.";
    const Texts types = attributeValues(part.root(), "ContentType");
    EXPECT_EQ(types.at(6), start + "worksheet+xml");
    EXPECT_EQ(types.at(7), start + "sharedStrings+xml");
}

TEST_F(XlsxCreaterTest, WorkbookWithFewChildrenGetsTheSheetsAtItsEnd) {
    changeTemplate("xl/workbook.xml", "<workbook><a/><b/></workbook>");
    EXPECT_EQ(childNames(workbookOf(twoRows()).part("xl/workbook.xml").root()), (Texts{"a", "b", "sheets"}));
}

TEST_F(XlsxCreaterTest, WhateverStandsAtPosition3OfTheWorkbookIsReplaced) {
    changeTemplate("xl/workbook.xml", "<workbook><a/><sheets/><b/><c/><d/></workbook>");
    EXPECT_EQ(childNames(workbookOf(twoRows()).part("xl/workbook.xml").root()),
              (Texts{"a", "sheets", "b", "sheets", "d"}));
}

TEST_F(XlsxCreaterTest, StylesHaveTwoEqualCellFormats) {
    const Part styles = workbookOf(twoRows()).part("xl/styles.xml");
    EXPECT_EQ(childNames(styles.root()), (Texts{"fonts", "fills", "borders", "cellStyleXfs", "cellXfs", "cellStyles"}));
    EXPECT_EQ(childNames(styles.root().child("fonts")).size(), 2U);  // phonetic properties name the second one
    const pugi::xml_node formats = styles.root().child("cellXfs");
    EXPECT_STREQ(formats.attribute("count").value(), "2");
    ASSERT_EQ(childNames(formats), (Texts{"xf", "xf"}));
    for (const pugi::xml_node format : formats.children()) {
        Texts attributes;
        for (const pugi::xml_attribute attribute : format.attributes()) {
            attributes.push_back(attribute.name() + std::string("=") + attribute.value());
        }
        EXPECT_EQ(attributes,
                  (Texts{"numFmtId=0", "fontId=0", "fillId=0", "borderId=0", "xfId=0", "applyAlignment=1"}));
        const pugi::xml_node alignment = format.child("alignment");
        EXPECT_STREQ(alignment.attribute("horizontal").value(), "left");
        EXPECT_STREQ(alignment.attribute("vertical").value(), "top");
        EXPECT_STREQ(alignment.attribute("wrapText").value(), "1");
    }
}

TEST_F(XlsxCreaterTest, EveryFormerListOfCellFormatsGoesAndTheNewOneTakesThePlaceOfTheLast) {
    changeTemplate("xl/styles.xml", "<s><a/><cellXfs/><b/><cellXfs/><c/></s>");
    EXPECT_EQ(childNames(workbookOf(twoRows()).part("xl/styles.xml").root()), (Texts{"a", "b", "cellXfs", "c"}));
}

TEST_F(XlsxCreaterTest, StylesWithoutCellFormatsGetThemAtTheFront) {
    changeTemplate("xl/styles.xml", "<s><a/><b/></s>");
    EXPECT_EQ(childNames(workbookOf(twoRows()).part("xl/styles.xml").root()), (Texts{"cellXfs", "a", "b"}));
}

TEST_F(XlsxCreaterTest, PackageHoldsTheNamedPartsAlone) {
    EXPECT_EQ(workbookOf(twoRows()).names(),
              (Texts{"[Content_Types].xml", "_rels/.rels", "docProps/app.xml", "docProps/core.xml", kRelationships,
                     kStrings, "xl/styles.xml", "xl/workbook.xml", "xl/worksheets/_rels/sheet1.xml.rels", kSheet}));
}

TEST_F(XlsxCreaterTest, FoldersForPicturesArePackedEmpty) {
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    const std::string listing = runCommand("unzip -l '" + creator->writtenPath() + "'").output;
    EXPECT_NE(listing.find("xl/media/\n"), std::string::npos);
    EXPECT_NE(listing.find("xl/drawings/_rels/\n"), std::string::npos);
    EXPECT_EQ(listing.find("mm/"), std::string::npos);
}

TEST_F(XlsxCreaterTest, StageFolderIsRemoved) {
    workbookOf(twoRows());
    EXPECT_FALSE(std::filesystem::exists(stagePath("")));
}

TEST_F(XlsxCreaterTest, WhatAnEarlierRunLeftDoesNoHarm) {
    writeText(stagePath("xl/worksheets/sheet9.xml"), "left");
    writeText(stagePath("xl/sharedStrings.xml"), "left");
    const Workbook workbook = workbookOf(twoRows());
    EXPECT_EQ(workbook.cells().size(), 3U);
    EXPECT_EQ(workbook.names().size(), 10U);
}

TEST_F(XlsxCreaterTest, ColumnsOfSeveralRowsAreTheKeysOfAllRowsAsTheyAreFirstSeen) {
    const Workbook workbook = workbookOf(
        Rows({Dictionary{{"B", "b1"}}, Dictionary{{"C", "c2"}, {"A", "a2"}}, Dictionary{{"A", "a3"}, {"B", "b3"}}}));
    EXPECT_EQ(workbook.cells(),
              (std::vector<Texts>{{"B", "C", "A"}, {"b1", "", ""}, {"", "c2", "a2"}, {"b3", "", "a3"}}));
}

TEST_F(XlsxCreaterTest, NamesComeFirstInASheetOfOneRow) {
    const Workbook workbook =
        workbookOf(Rows({Dictionary{{"Phone", "1"}, {"Last Name", "Doe"}, {"First Name", "Jane"}}}));
    EXPECT_EQ(workbook.cells(), (std::vector<Texts>{{"First Name", "Phone", "Last Name"}, {"Jane", "1", "Doe"}}));
}

TEST_F(XlsxCreaterTest, LastNameIsFirstOrSecondInASheetOfOneRow) {
    EXPECT_EQ(workbookOf(Rows({Dictionary{{"Last Name", "l"}, {"A", "a"}}})).cells()[0], (Texts{"Last Name", "A"}));
    EXPECT_EQ(workbookOf(Rows({Dictionary{{"A", "a"}, {"B", "b"}, {"Last Name", "l"}}})).cells()[0],
              (Texts{"A", "Last Name", "B"}));
}

TEST_F(XlsxCreaterTest, NamesKeepTheirPlaceInASheetOfSeveralRows) {
    const Dictionary row{{"Phone", "1"}, {"Last Name", "Doe"}, {"First Name", "Jane"}};
    const Workbook workbook = workbookOf(Rows({row, row}));
    EXPECT_EQ(workbook.cells()[0], (Texts{"Phone", "Last Name", "First Name"}));
    EXPECT_EQ(workbook.cells()[2], (Texts{"1", "Doe", "Jane"}));
}

TEST_F(XlsxCreaterTest, ThreeRowsOfFourKeysMakeSixteenSharedStrings) {
    const Dictionary row{{"A", "same"}, {"B", "same"}, {"C", "same"}, {"D", "same"}};
    const Part strings = workbookOf(Rows({row, row, row})).part(kStrings);
    EXPECT_EQ(childNames(strings.root()).size(), 16U);
    EXPECT_STREQ(strings.root().attribute("count").value(), "16");
    EXPECT_STREQ(strings.root().attribute("uniqueCount").value(), "16");
}

TEST_F(XlsxCreaterTest, CellsAreNumberedRowByRow) {
    const Part sheet = workbookOf(twoRows()).part(kSheet);
    Texts numbers;
    for (const pugi::xml_node row : sheet.root().child("sheetData").children()) {
        for (const pugi::xml_node cell : row.children()) numbers.emplace_back(cell.child_value("v"));
    }
    EXPECT_EQ(numbers, (Texts{"0", "1", "2", "3", "4", "5"}));
}

TEST_F(XlsxCreaterTest, ReferencesHaveOneLetterThenTwo) {
    Dictionary row;
    for (int i = 1; i <= 703; ++i) row.set("key" + std::to_string(i), "x");
    const Texts references = workbookOf(Rows({row, row, row, row})).references(4);
    ASSERT_EQ(references.size(), 703U);
    EXPECT_EQ(references[0], "A5");
    EXPECT_EQ(references[25], "Z5");
    EXPECT_EQ(references[26], "AA5");
    EXPECT_EQ(references[51], "AZ5");
    EXPECT_EQ(references[52], "BA5");
    EXPECT_EQ(references[701], "ZZ5");
}

TEST_F(XlsxCreaterTest, FirstLetterRunsBeyondZPastColumn702) {
    Dictionary row;
    for (int i = 1; i <= 730; ++i) row.set("key" + std::to_string(i), "x");
    const Texts references = workbookOf(Rows({row})).references(0);
    EXPECT_EQ(references[702], "[A1");
    EXPECT_EQ(references[727], "[Z1");
    EXPECT_EQ(references[728], "\\A1");
}

TEST_F(XlsxCreaterTest, DimensionIsAlwaysTheSame) {
    for (const Rows& rows : {Rows(), Rows({Dictionary{{"A", "a"}}}), twoRows()}) {
        const Part sheet = workbookOf(rows).part(kSheet);
        EXPECT_STREQ(sheet.root().child("dimension").attribute("ref").value(), "A1:L111");
    }
}

TEST_F(XlsxCreaterTest, WithoutRowsTheSheetIsEmpty) {
    const Workbook workbook = workbookOf(Rows());
    EXPECT_TRUE(workbook.cells().empty());
    EXPECT_NE(workbook.text(kSheet).find("\t<sheetData></sheetData>\n"), std::string::npos);
    EXPECT_NE(workbook.text(kStrings).find(" count=\"0\" uniqueCount=\"0\"></sst>\n"), std::string::npos);
}

TEST_F(XlsxCreaterTest, RowsWithoutKeysAreRowsWithoutCells) {
    EXPECT_EQ(workbookOf(Rows({Dictionary(), Dictionary()})).cells(), (std::vector<Texts>{{}, {}, {}}));
}

TEST_F(XlsxCreaterTest, OtherValuesThanTextsAndArraysAreEmptyCells) {
    EXPECT_EQ(workbookOf(Rows({Dictionary{{"A", 7}, {"B", Value()}, {"C", Array{"12", "34"}}}})).cells()[1],
              (Texts{"", "", "  \r\n12  \r\n34"}));
}

TEST_F(XlsxCreaterTest, OddTextsReadBack) {
    for (const std::string text : {" ", "\n", "]]>", "&#13;", "<si>", "\"'", "a\r\nb", "\t", "\xF0\x9F\x98\x80"}) {
        EXPECT_EQ(workbookOf(Rows({Dictionary{{text, text}}})).cells(), (std::vector<Texts>{{text}, {text}}));
    }
}

TEST_F(XlsxCreaterTest, CharactersThatXmlCannotCarryAreLeftOut) {
    const std::string text("\0a\xFF\x01z\xEF\xBF\xBF", 8);
    EXPECT_EQ(workbookOf(Rows({Dictionary{{"A", text}}})).cells()[1], Texts{"az"});
}

TEST_F(XlsxCreaterTest, ManyRowsAndLongTextsReadBack) {
    const std::string longText(std::size_t{1} << 20, 'x');
    std::vector<Dictionary> rows;
    for (int i = 0; i < 5000; ++i) rows.push_back(Dictionary{{"A", "row " + std::to_string(i)}});
    rows.push_back(Dictionary{{"A", longText}});
    const std::vector<Texts> cells = workbookOf(Rows(rows)).cells();
    ASSERT_EQ(cells.size(), 5002U);
    for (std::size_t i = 0; i < 5000; ++i) ASSERT_EQ(cells[i + 1], Texts{"row " + std::to_string(i)});
    EXPECT_EQ(cells[5001], Texts{longText});
}

TEST_F(XlsxCreaterTest, ReportsProgressAfterTheTemplateEveryRowAndTheFile) {
    creatorOf(twoRows())->startConvert();
    ASSERT_EQ(delegate.progress.size(), 5U);
    const double expected[] = {0.2, 0.2, 0.5, 0.8, 1.0};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_DOUBLE_EQ(delegate.progress[i], expected[i]);
    EXPECT_TRUE(delegate.completions.empty());
    EXPECT_EQ(delegate.starts, 0);
}

TEST_F(XlsxCreaterTest, OneRowReportsProgressAlike) {
    creatorOf(Rows({Dictionary{{"A", "a"}}}))->startConvert();
    ASSERT_EQ(delegate.progress.size(), 4U);
    const double expected[] = {0.2, 0.2, 0.8, 1.0};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(delegate.progress[i], expected[i]);
}

TEST_F(XlsxCreaterTest, ProgressOfTheRowsFillsTheSliceOfTheFileToo) {
    const auto creator = creatorOf(twoRows());
    creator->setIndex(1);
    creator->setCount(4);
    creator->startConvert();
    ASSERT_EQ(delegate.progress.size(), 5U);
    EXPECT_DOUBLE_EQ(delegate.progress[2], 0.5 / 4 + 0.25);
    EXPECT_DOUBLE_EQ(delegate.progress[4], 0.5);
}

TEST_F(XlsxCreaterTest, DelegateIndexCountAndProfileAreThoseOfThePartWriterToo) {
    const auto creator = creatorOf(twoRows());
    creator->setIndex(3);
    creator->setCount(7);
    creator->setProfile(Profile::kStandard);
    EXPECT_EQ(creator->xlsxFiles()->fileCreatorDelegate(), &delegate);
    EXPECT_EQ(creator->xlsxFiles()->index(), 3);
    EXPECT_EQ(creator->xlsxFiles()->count(), 7);
    EXPECT_EQ(creator->xlsxFiles()->profile(), Profile::kStandard);
}

TEST_F(XlsxCreaterTest, StopIsKeptFromThePartWriter) {
    const auto creator = creatorOf(twoRows());
    creator->setIsStop(true);
    EXPECT_FALSE(creator->xlsxFiles()->isStop());
}

TEST_F(XlsxCreaterTest, StoppedWhileRowsAreWrittenWritesThemAllAndPacksNothing) {
    const auto creator = creatorOf(twoRows());
    delegate.onProgress = [&creator](double) { creator->setIsStop(true); };
    creator->startConvert();
    EXPECT_TRUE(folder.names().empty());
    EXPECT_TRUE(creator->writtenPath().empty());
    EXPECT_EQ(delegate.completions, std::vector<bool>{false});
    ASSERT_EQ(delegate.progress.size(), 4U);
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 0.8);
    const Part strings(fileText(stagePath(kStrings)));  // the stage folder stays
    EXPECT_STREQ(strings.root().attribute("count").value(), "6");
}

TEST_F(XlsxCreaterTest, NextDocumentClearsTheStageFolderOfAStoppedOne) {
    const auto stopped = creatorOf(Rows({Dictionary{{"A", "stopped"}}}));
    stopped->setIsStop(true);
    stopped->startConvert();
    EXPECT_EQ(workbookOf(twoRows()).cells()[1], (Texts{"a1", "b1"}));
}

TEST_F(XlsxCreaterTest, TakenNamesAreNumbered) {
    folder.addFile("Table.xlsx");
    folder.addFile("Table(0).xlsx");
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), folder.path("Table(1).xlsx"));
    EXPECT_EQ(fileText(folder.path("Table.xlsx")), "there before");
    EXPECT_EQ(folder.names(), (Texts{"Table(0).xlsx", "Table(1).xlsx", "Table.xlsx"}));
}

TEST_F(XlsxCreaterTest, PathsMayHoldWhatShellsAndZipObey) {
    const std::string odd = folder.path("-x 'a' \"$(b)\" [c]*");
    std::filesystem::create_directory(odd);
    const auto creator = XlsxCreater::initWithDictionary(twoRows(), odd + "/@ -m [d]* \"'$e");
    creator->startConvert();
    EXPECT_EQ(creator->failure(), "");
    EXPECT_EQ(creator->writtenPath(), odd + "/@ -m [d]* \"'$e.xlsx");
    EXPECT_EQ(Workbook(creator->writtenPath()).cells().size(), 3U);
}

TEST_F(XlsxCreaterTest, RelativePathsAreTakenFromTheFolderOfTheProcess) {
    const std::filesystem::path before = std::filesystem::current_path();
    setResourceFolder(resourceFolder());  // may be found from that folder
    std::filesystem::current_path(folder.path());
    XlsxCreater::initWithDictionary(twoRows(), "Table")->startConvert();
    std::filesystem::current_path(before);
    EXPECT_EQ(folder.names(), Texts{"Table.xlsx"});
}

TEST_F(XlsxCreaterTest, FolderThatTakesNoFileIsAFailureAndProgressStillEnds) {
    folder.addFile("blocked");
    const auto creator = XlsxCreater::initWithDictionary(twoRows(), folder.path("blocked/Table"));
    creator->setFileCreatorDelegate(&delegate);
    creator->startConvert();
    EXPECT_NE(creator->failure(), "");
    EXPECT_TRUE(creator->writtenPath().empty());
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 1.0);
    EXPECT_TRUE(delegate.completions.empty());
    EXPECT_FALSE(std::filesystem::exists(stagePath("")));
}

TEST_F(XlsxCreaterTest, WithoutTheTemplateOnlyWhatIsMadeAnewIsPacked) {
    setResourceFolder(resources.path());
    const LogLines log;
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    EXPECT_NE(creator->failure().find("test.xlsx"), std::string::npos);
    EXPECT_EQ(Workbook(creator->writtenPath()).names(), Texts{kStrings});
    EXPECT_TRUE(delegate.completions.empty());
}

TEST_F(XlsxCreaterTest, PartThatTheTemplateLacksStaysMissing) {
    changeTemplate("xl/styles.xml", "");
    const LogLines log;
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    EXPECT_NE(creator->failure().find("styles.xml"), std::string::npos);
    EXPECT_EQ(log.lines().size(), 1U);
    const Workbook workbook(creator->writtenPath());
    EXPECT_EQ(workbook.names().size(), 9U);
    EXPECT_EQ(workbook.cells().size(), 3U);
}

TEST_F(XlsxCreaterTest, SheetsOfTheTemplateAreDropped) {
    changeTemplate("xl/worksheets/_rels/sheet3.xml.rels", "<Relationships/>");
    const Texts names = workbookOf(twoRows(), Profile::kStandard).names();
    EXPECT_EQ(
        std::count_if(names.begin(), names.end(), [](const auto& name) { return name.starts_with("xl/worksheets"); }),
        1);
}

TEST_F(XlsxCreaterTest, WritersOnSeveralThreadsTakeTurns) {
    constexpr std::size_t kWriters = 8;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kWriters; ++i) {
        threads.emplace_back([this, i] {
            const Dictionary row{{"A", std::to_string(i)}};
            XlsxCreater::initWithDictionary(Rows({row, row}), folder.path("Table"))->startConvert();
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> texts;
    for (const std::string& name : folder.names()) {
        const std::vector<Texts> cells = Workbook(folder.path(name)).cells();
        ASSERT_EQ(cells.size(), 3U);
        EXPECT_EQ(cells[1], cells[2]);
        texts.insert(cells[1].at(0));
    }
    EXPECT_EQ(texts.size(), kWriters);
}

TEST_F(XlsxCreaterTest, KeepsWhatItWasMadeWith) {
    const auto creator = creatorOf(twoRows());
    EXPECT_EQ(creator->DictionArr().size(), 2U);
    EXPECT_EQ(creator->SavePath(), folder.path("Table"));
    EXPECT_EQ(creator->applicationSupportFolder(), data.path("ZkMobileBackup/XlsStage"));
}

class XlsxStandardProfile : public XlsxTest {};

TEST_F(XlsxStandardProfile, DiffersInTheNamedPlacesAlone) {
    const Workbook legacy = workbookOf(twoRows());
    const Workbook standard = workbookOf(twoRows(), Profile::kStandard);
    std::string sheet = replaced(legacy.text(kSheet), "baseColWith", "baseColWidth");
    sheet = replaced(sheet, "A1:L111", "A1:B3");
    for (int row = 1; row <= 3; ++row) sheet = replaced(sheet, "1:87", "1:2");
    EXPECT_EQ(standard.text(kSheet), sheet);
    Texts names = legacy.names();
    std::erase(names, "xl/worksheets/_rels/sheet1.xml.rels");
    EXPECT_EQ(standard.names(), names);
    for (const std::string& name : names) {
        if (name == kSheet) continue;
        EXPECT_EQ(standard.text(name), legacy.text(name)) << name;
    }
}

TEST_F(XlsxStandardProfile, RowsOfSeveralLinesTellTheirHeight) {
    const Rows rows({Dictionary{{"A", "x"}, {"B", "y"}}, Dictionary{{"A", "x"}, {"B", "one\r\ntwo\nthree"}},
                     Dictionary{{"A", "x"}, {"B", std::string(1000, '\n')}}});
    const Part standard = workbookOf(rows, Profile::kStandard).part(kSheet);
    EXPECT_EQ(attributeValues(standard.root().child("sheetData"), "ht"), (Texts{"", "", "43", "407"}));
    const Part legacy = workbookOf(rows).part(kSheet);
    EXPECT_EQ(attributeValues(legacy.root().child("sheetData"), "ht"), (Texts{"", "", "", ""}));
}

TEST_F(XlsxStandardProfile, TextsThatLookLikeEscapesAreEscaped) {
    const Rows rows({Dictionary{{"A", "_x0041_"}}});
    EXPECT_EQ(workbookOf(rows, Profile::kStandard).cells()[1], Texts{"_x005F_x0041_"});
    EXPECT_EQ(workbookOf(rows).cells()[1], Texts{"_x0041_"});
}

TEST_F(XlsxStandardProfile, TextsBecomeNoEscapesByWhatXmlCannotCarry) {
    const Rows rows({Dictionary{{"A",
                                 "_x00\x01"
                                 "41_"}}});
    EXPECT_EQ(workbookOf(rows, Profile::kStandard).cells()[1], Texts{"_x005F_x0041_"});
}

TEST_F(XlsxStandardProfile, ColumnsBehindZZHaveThreeLetters) {
    Dictionary row;
    for (int i = 1; i <= 730; ++i) row.set("key" + std::to_string(i), "x");
    const Texts references = workbookOf(Rows({row}), Profile::kStandard).references(0);
    EXPECT_EQ(references[25], "Z1");
    EXPECT_EQ(references[26], "AA1");
    EXPECT_EQ(references[701], "ZZ1");
    EXPECT_EQ(references[702], "AAA1");
    EXPECT_EQ(references[728], "ABA1");
}

TEST_F(XlsxStandardProfile, EmptySheetHasTheLeastExtent) {
    const auto dimension = [](const Part& sheet) -> std::string {
        return sheet.root().child("dimension").attribute("ref").value();
    };
    EXPECT_EQ(dimension(workbookOf(Rows(), Profile::kStandard).part(kSheet)), "A1:A1");
    const Part withoutKeys = workbookOf(Rows({Dictionary()}), Profile::kStandard).part(kSheet);
    EXPECT_EQ(dimension(withoutKeys), "A1:A1");
    EXPECT_EQ(attributeValues(withoutKeys.root().child("sheetData"), "spans"), (Texts{"1:1", "1:1"}));
}

class WriteXlsxFileTest : public XlsxTest {
protected:
    WriteXlsxFileTest() { creatorOf(Rows())->initXlsxFile(); }
};

TEST_F(WriteXlsxFileTest, StartsWithNothing) {
    const auto writer = WriteXlsxFile::init();
    EXPECT_TRUE(writer->DictionArr().empty());
    EXPECT_TRUE(writer->DicKeyArr().empty());
    EXPECT_EQ(writer->flag_v(), 0U);
    EXPECT_EQ(writer->flag_count(), 0U);
    EXPECT_FALSE(writer->isStop());
}

TEST_F(WriteXlsxFileTest, KeepsRowsKeysAndCounts) {
    const auto writer = WriteXlsxFile::init();
    writer->writeXlsx(twoRows());
    EXPECT_EQ(writer->DictionArr().size(), 2U);
    EXPECT_EQ(writer->DicKeyArr(), (Texts{"A", "B"}));
    EXPECT_EQ(writer->getAllKey(), (Texts{"A", "B"}));
    EXPECT_EQ(writer->flag_v(), 6U);
    EXPECT_EQ(writer->flag_count(), 6U);
    EXPECT_EQ(writer->failure(), "");
}

TEST_F(WriteXlsxFileTest, ItsOwnStopFlagEndsTheSheetBeforeTheNextRow) {
    const auto writer = WriteXlsxFile::init();
    writer->setFileCreatorDelegate(&delegate);
    delegate.onProgress = [&writer](double process) { writer->setIsStop(process > 0.4); };
    writer->writeXlsx(twoRows());
    EXPECT_EQ(delegate.progress.size(), 2U);
    EXPECT_TRUE(delegate.completions.empty());
    EXPECT_EQ(childNames(Part(fileText(stagePath(kSheet))).root().child("sheetData")), (Texts{"row", "row"}));
    const Part strings(fileText(stagePath(kStrings)));
    EXPECT_STREQ(strings.root().attribute("count").value(), "4");
    EXPECT_EQ(childNames(strings.root()).size(), 4U);
}

TEST_F(WriteXlsxFileTest, StoppedSheetStillTellsItsTrueExtent) {
    const auto writer = WriteXlsxFile::init();
    writer->setProfile(Profile::kStandard);
    writer->setFileCreatorDelegate(&delegate);
    delegate.onProgress = [&writer](double process) { writer->setIsStop(process > 0.4); };
    writer->writeXlsx(twoRows());
    const Part sheet(fileText(stagePath(kSheet)));
    EXPECT_STREQ(sheet.root().child("dimension").attribute("ref").value(), "A1:B2");
}

TEST_F(WriteXlsxFileTest, StoppedBeforeTheHeaderWritesNoRow) {
    const auto writer = WriteXlsxFile::init();
    writer->setIsStop(true);
    writer->writeXlsx(Rows({Dictionary{{"A", "a"}}}));
    EXPECT_TRUE(childNames(Part(fileText(stagePath(kSheet))).root().child("sheetData")).empty());
    EXPECT_EQ(writer->flag_count(), 0U);
}

}  // namespace
}  // namespace ZkMobileBackup
