#include <gtest/gtest.h>
#include <string>

#include "export/PackagePart.h"
#include "platform/Xml.h"
#include "platform/XmlStream.h"
#include "tests/export/ExportTesting.h"

namespace ZkMobileBackup {
namespace {

class PackagePartTest : public testing::Test {
protected:
    std::string partWith(const std::string& text) const {
        writeText(folder.path("part.xml"), text);
        return folder.path("part.xml");
    }

    TemporaryFolder folder;
};

TEST_F(PackagePartTest, NewPartHasItsDeclarationAlone) {
    EXPECT_EQ(PackagePart().write(folder.path("part.xml")), "");
    EXPECT_EQ(fileText(folder.path("part.xml")), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n");
}

TEST_F(PackagePartTest, DeclarationAndDocumentTypeAreKept) {
    const std::string path = partWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE a><a><b/></a>");
    EXPECT_EQ(PackagePart(path).write(path), "");
    EXPECT_EQ(fileText(path), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE a>\n<a>\n\t<b></b>\n</a>\n");
}

TEST_F(PackagePartTest, WhatCannotBeReadIsEmptyAndNamed) {
    const PackagePart missing(folder.path("missing.xml"));
    EXPECT_NE(missing.failure().find(folder.path("missing.xml")), std::string::npos);
    EXPECT_FALSE(missing.first("a"));
    const PackagePart malformed(partWith("<a><b></a>"));
    EXPECT_NE(malformed.failure(), "");
    EXPECT_FALSE(malformed.first("a"));
    EXPECT_NE(PackagePart(partWith("")).failure(), "");
}

TEST_F(PackagePartTest, FirstElementOfANameIsThatWhichBeginsFirst) {
    const PackagePart part(partWith("<w:a><w:c><w:b id=\"1\"/></w:c><w:b id=\"2\"/></w:a>"));
    EXPECT_STREQ(part.first("w:b").attribute("id").value(), "1");
    EXPECT_FALSE(part.first("b"));
}

TEST_F(PackagePartTest, PositionsCountElementsAlone) {
    const PackagePart part(partWith("<a> text <!-- comment --><b/>\n<?pi x?><c/></a>"));
    EXPECT_STREQ(PackagePart::child(part.first("a"), 0).name(), "b");
    EXPECT_STREQ(PackagePart::child(part.first("a"), 1).name(), "c");
    EXPECT_FALSE(PackagePart::child(part.first("a"), 2));
    EXPECT_FALSE(PackagePart::child(pugi::xml_node(), 0));
}

TEST_F(PackagePartTest, StreamedRowsStandInPlaceOfTheElement) {
    constexpr int kRows = 30000;  // more than is gathered at a time
    const PackagePart part(partWith("<a><b/><c/></a>"));
    const pugi::xml_node place = appendElement(part.first("a"), "rows");
    appendElement(part.first("a"), "d");
    EXPECT_EQ(part.write(folder.path("streamed.xml"), place,
                         [](XmlStream& parent) {
                             for (int row = 0; row < kRows; ++row) parent.begin("r").text(std::to_string(row)).end();
                         }),
              "");
    std::string expected = "<a>\n\t<b></b>\n\t<c></c>\n";
    for (int row = 0; row < kRows; ++row) expected += "\t<r>" + std::to_string(row) + "</r>\n";
    EXPECT_EQ(fileText(folder.path("streamed.xml")), "<?xml version=\"1.0\"?>\n" + expected + "\t<d></d>\n</a>\n");
}

TEST_F(PackagePartTest, NothingIsStreamedWithoutAPlace) {
    const PackagePart part(partWith("<a><b/></a>"));
    pugi::xml_document other;
    for (const pugi::xml_node place : {pugi::xml_node(), appendElement(other, "b")}) {
        EXPECT_EQ(part.write(folder.path("written.xml"), place,
                             [](XmlStream& parent) { parent.begin("r").text("behind the end").end(); }),
                  "");
        EXPECT_EQ(fileText(folder.path("written.xml")), "<?xml version=\"1.0\"?>\n<a>\n\t<b></b>\n</a>\n");
    }
}

TEST_F(PackagePartTest, FailureToWriteNamesThePart) {
    PackagePart part;
    const pugi::xml_node place = appendElement(part.document(), "rows");
    EXPECT_NE(part.write(folder.path("missing/part.xml")).find("missing/part.xml"), std::string::npos);
    EXPECT_NE(part.write(folder.path("missing/part.xml"), place, [](XmlStream&) {}).find("missing/part.xml"),
              std::string::npos);
}

}  // namespace
}  // namespace ZkMobileBackup
