#include <gtest/gtest.h>
#include <string>

#include "platform/Xml.h"

namespace ZkMobileBackup {
namespace {

using namespace std::string_literals;

constexpr unsigned kParseAsWritten = (pugi::parse_default | pugi::parse_ws_pcdata) & ~pugi::parse_eol;

std::string printedWithText(std::string_view text) {
    pugi::xml_document document;
    appendTextElement(document, "a", text);
    return prettyPrinted(document);
}

std::string printedWithAttribute(std::string_view value) {
    pugi::xml_document document;
    setAttribute(appendElement(document, "a"), "b", value);
    return prettyPrinted(document);
}

std::string textReadBack(std::string_view text) {
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(printedWithText(text).c_str(), kParseAsWritten));
    return document.child("a").text().get();
}

constexpr const char* kDeclaration = "<?xml version=\"1.0\"?>\n";

TEST(XmlText, OrdinaryTextIsKept) {
    EXPECT_EQ(xmlText("a \xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80"), "a \xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80");
}

TEST(XmlText, TabAndLineEndsAreKept) {
    EXPECT_EQ(xmlText("a\tb\r\nc\rd"), "a\tb\r\nc\rd");
}

TEST(XmlText, ControlCharactersAreLeftOut) {
    for (char c = 0; c < 0x20; ++c) {
        if (c == '\t' || c == '\n' || c == '\r') continue;
        EXPECT_EQ(xmlText("a"s + c + "b"), "ab") << static_cast<int>(c);
    }
    EXPECT_EQ(xmlText("a\x7F"), "a\x7F");
}

TEST(XmlText, NoncharactersOfTheFirstPlaneAreLeftOut) {
    EXPECT_EQ(xmlText("a\xEF\xBF\xBE\xEF\xBF\xBF"), "a");
    EXPECT_EQ(xmlText("\xEF\xBF\xBD"), "\xEF\xBF\xBD");
}

TEST(XmlText, LoneSurrogatesAreLeftOut) {
    EXPECT_EQ(xmlText("a\xED\xA0\x80z\xED\xBF\xBF"), "az");
}

TEST(XmlText, BytesThatAreNoUtf8AreLeftOut) {
    EXPECT_EQ(xmlText("a\xFFz\xC0\x80"), "az");
    EXPECT_EQ(xmlText("cut \xE4\xB8"), "cut ");
}

TEST(XmlText, NothingRemainsOfUnfitText) {
    EXPECT_EQ(printedWithText("\x01\x02"), kDeclaration + "<a></a>\n"s);
}

TEST(PrettyPrinted, ChildrenAreIndentedAndTextIsNot) {
    pugi::xml_document document;
    const pugi::xml_node outer = appendElement(document, "outer");
    appendTextElement(outer, "inner", " text ");
    EXPECT_EQ(prettyPrinted(document), kDeclaration + "<outer>\n\t<inner> text </inner>\n</outer>\n"s);
}

TEST(PrettyPrinted, EmptyElementHasStartAndEndTag) {
    EXPECT_EQ(printedWithText(""), kDeclaration + "<a></a>\n"s);
    EXPECT_EQ(printedWithAttribute("v"), kDeclaration + "<a b=\"v\"></a>\n"s);
}

TEST(PrettyPrinted, DeclarationAndDocumentTypeLead) {
    pugi::xml_document document;
    const pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    setAttribute(declaration, "version", "1.0");
    setAttribute(declaration, "encoding", "utf-8");
    document.append_child(pugi::node_doctype).set_value("a SYSTEM \"a.dtd\"");
    appendElement(document, "a");
    EXPECT_EQ(prettyPrinted(document),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE a SYSTEM \"a.dtd\">\n<a></a>\n");
}

TEST(PrettyPrinted, MarkupInTextIsEscaped) {
    EXPECT_EQ(printedWithText("<a> & ]]>"), kDeclaration + "<a>&lt;a&gt; &amp; ]]&gt;</a>\n"s);
}

TEST(PrettyPrinted, LineEndsInTextStandAsTheirBytes) {
    EXPECT_EQ(printedWithText("  \r\na\tb\rc"), kDeclaration + "<a>  \r\na\tb\rc</a>\n"s);
}

TEST(PrettyPrinted, LineEndsAndTabsInAttributesAreCharacterReferences) {
    EXPECT_EQ(printedWithAttribute("a\r\nb\tc"), kDeclaration + "<a b=\"a&#13;&#10;b&#09;c\"></a>\n"s);
}

TEST(PrettyPrinted, QuotesInAttributesAreEscaped) {
    EXPECT_EQ(printedWithAttribute("\"<&"), kDeclaration + "<a b=\"&quot;&lt;&amp;\"></a>\n"s);
}

TEST(PrettyPrinted, AttributeReadsBackAsItWas) {
    const std::string value = " a\r\nb\tc <\"'&> \xE4\xB8\xAD ";
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(printedWithAttribute(value).c_str()));
    EXPECT_EQ(document.child("a").attribute("b").value(), value);
}

TEST(PrettyPrinted, AttributeWithUnfitCharactersIsCleaned) {
    EXPECT_EQ(printedWithAttribute("a\x01z"), kDeclaration + "<a b=\"az\"></a>\n"s);
}

TEST(PrettyPrinted, OddTextsReadBackAsTheyWere) {
    for (const std::string text : {" ", "\n", "  \r\n", "\t x \t", "]]>", "&amp;", "<!-- -->", "<?xml?>", "\xC2\x85",
                                   "\xE2\x80\xA8", "\xF0\x9F\x98\x80", "\x7F"}) {
        EXPECT_EQ(textReadBack(text), text);
    }
}

TEST(SetAttribute, SecondValueReplacesTheFirst) {
    pugi::xml_document document;
    const pugi::xml_node element = appendElement(document, "a");
    setAttribute(element, "b", "1");
    setAttribute(element, "b", "2");
    EXPECT_EQ(prettyPrinted(document), kDeclaration + "<a b=\"2\"></a>\n"s);
}

}  // namespace
}  // namespace ZkMobileBackup
