#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "platform/Xml.h"
#include "platform/XmlStream.h"

namespace ZkMobileBackup {
namespace {

/// The same elements, once as a tree and once as a stream.
struct Both {
    pugi::xml_document tree;
    std::string text;

    std::string printedTree() const {
        const std::string printed = prettyPrinted(tree);
        const std::string declaration = "<?xml version=\"1.0\"?>\n";
        return printed.substr(declaration.size());
    }
};

TEST(XmlStream, ElementsWithElementsAndTextsEqualThePrintedTree) {
    Both both;
    const pugi::xml_node row = appendElement(both.tree, "row");
    setAttribute(row, "r", "1");
    setAttribute(appendTextElement(appendElement(row, "c"), "v", "12"), "t", "s");
    appendElement(row, "empty");
    appendTextElement(row, "t", "");
    XmlStream stream(both.text, 0);
    stream.begin("row").attribute("r", "1");
    stream.begin("c").begin("v").attribute("t", "s").text("12").end().end();
    stream.begin("empty").end().begin("t").text("").end().end();
    EXPECT_EQ(both.text, both.printedTree());
}

TEST(XmlStream, EveryCharacterIsWrittenAsInThePrintedTree) {
    for (unsigned c = 1; c < 0x3000; ++c) {
        const std::string character =
            c < 0x80    ? std::string{static_cast<char>(c)}
            : c < 0x800 ? std::string{static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))}
                        : std::string{static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
                                      static_cast<char>(0x80 | (c & 0x3F))};
        const std::string value = "a" + character + "]]>" + character;
        Both both;
        setAttribute(appendTextElement(both.tree, "t", value), "name", value);
        XmlStream(both.text, 0).begin("t").attribute("name", value).text(value).end();
        ASSERT_EQ(both.text, both.printedTree()) << c;
    }
}

/// Adds random elements to both.
void addRandomElements(pugi::xml_node parent, XmlStream& stream, std::minstd_rand& random, int depth) {
    static constexpr const char* kNames[] = {"w:p", "sf:t", "c"};
    for (auto count = random() % 4; count > 0; --count) {
        const char* name = kNames[random() % std::size(kNames)];
        const std::string text(random() % 3, '<');
        stream.begin(name);
        const bool hasText = random() % 2 == 0 || depth == 0;
        pugi::xml_node element = hasText ? appendTextElement(parent, name, text) : appendElement(parent, name);
        if (random() % 2 == 0) {
            setAttribute(element, "a", text);
            stream.attribute("a", text);
        }
        if (hasText) {
            stream.text(text);
        } else {
            addRandomElements(element, stream, random, depth - 1);
        }
        stream.end();
    }
}

TEST(XmlStream, RandomElementsEqualThePrintedTree) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::minstd_rand random(seed);
        Both both;
        XmlStream stream(both.text, 0);
        stream.begin("root");
        addRandomElements(appendElement(both.tree, "root"), stream, random, 4);
        stream.end();
        ASSERT_EQ(both.text, both.printedTree()) << seed;
    }
}

TEST(XmlStream, TreesStandBetweenStreamedElements) {
    pugi::xml_document whole;
    pugi::xml_document parts;
    const pugi::xml_node table = appendElement(appendElement(whole, "body"), "tbl");
    for (const pugi::xml_node parent : {table, appendElement(parts, "tbl")}) {
        appendTextElement(appendElement(parent, "pr"), "t", "x");
        appendElement(parent, "grid");
    }
    appendTextElement(appendElement(table, "tr"), "t", "y");
    appendElement(table, "end");
    std::string text;
    XmlStream stream(text, 1);
    stream.begin("tbl").tree(parts.first_child().child("pr")).tree(parts.first_child().child("grid"));
    stream.begin("tr").begin("t").text("y").end().end().tree(table.child("end")).end();
    const std::string printed = prettyPrinted(whole);
    EXPECT_NE(printed.find("<body>\n" + text + "</body>"), std::string::npos) << text;
}

TEST(XmlStream, LongTextIsTakenAwayAndNothingIsLost) {
    std::string whole;
    std::string piece;
    std::string drained;
    std::size_t longest = 0;
    XmlStream streamedWhole(whole, 0);
    XmlStream streamedPieces(piece, 0, [&] {
        longest = std::max(longest, piece.size());
        drained += piece;
        piece.clear();
    });
    for (XmlStream* stream : {&streamedWhole, &streamedPieces}) {
        stream->begin("rows");
        for (int row = 0; row < 20000; ++row) {
            stream->begin("row").attribute("r", std::to_string(row)).begin("t").text("some text").end().end();
        }
        stream->end();
    }
    EXPECT_LT(longest, whole.size() / 2);
    EXPECT_EQ(drained + piece, whole);
}

TEST(PrintedAround, ContentStandsWhereThePlaceholderWas) {
    pugi::xml_document whole;
    pugi::xml_document around;
    std::string content;
    for (pugi::xml_document* document : {&whole, &around}) {
        const pugi::xml_node body = appendElement(appendElement(*document, "doc"), "body");
        appendElement(body, "before");
        if (document == &whole) {
            appendTextElement(appendElement(body, "tbl"), "t", "x");
            appendElement(body, "tbl");
        } else {
            appendElement(body, "rows");
        }
        appendElement(body, "after");
    }
    const PrintedAround printed(around, around.child("doc").child("body").child("rows"));
    XmlStream(content, printed.depth).begin("tbl").begin("t").text("x").end().end().begin("tbl").end();
    EXPECT_EQ(printed.before + content + printed.behind, prettyPrinted(whole));
}

TEST(PrintedAround, WhatReadsLikeThePlaceholderStays) {
    constexpr const char* kDocument =
        "<doc><a><rows></rows></a><!--<placeholder-0></placeholder-0>--><placeholder-1></placeholder-1><b><rows></rows>"
        "</b></doc>";
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(kDocument, pugi::parse_default | pugi::parse_comments));
    const pugi::xml_node rows = document.child("doc").child("b").child("rows");
    const PrintedAround printed(document, rows);
    EXPECT_EQ(printed.depth, 2U);
    EXPECT_EQ(printed.before,
              "<?xml version=\"1.0\"?>\n<doc>\n\t<a>\n\t\t<rows></rows>\n\t</a>\n"
              "\t<!--<placeholder-0></placeholder-0>-->\n\t<placeholder-1></placeholder-1>\n\t<b>\n");
    EXPECT_EQ(printed.behind, "\t</b>\n</doc>\n");
    EXPECT_STREQ(rows.name(), "rows");
}

TEST(PrintedAround, PlaceAmongTextsIsFound) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<doc>text<rows></rows>more</doc>"));
    const PrintedAround printed(document, document.child("doc").child("rows"));
    EXPECT_EQ(printed.before, "<?xml version=\"1.0\"?>\n<doc>text");
    EXPECT_EQ(printed.behind, "more</doc>\n");
}

TEST(PrintedAround, NoContentLeavesNothingOfThePlaceholder) {
    pugi::xml_document document;
    const pugi::xml_node body = appendElement(document, "body");
    appendElement(body, "before");
    const PrintedAround printed(document, appendElement(body, "rows"));
    EXPECT_EQ(printed.before + printed.behind, "<?xml version=\"1.0\"?>\n<body>\n\t<before></before>\n</body>\n");
}

}  // namespace
}  // namespace ZkMobileBackup
