#include <gtest/gtest.h>
#include <string>

#include "export/StreamedPart.h"
#include "platform/Xml.h"
#include "tests/export/ExportTesting.h"

namespace ZkMobileBackup {
namespace {

class StreamedPartTest : public testing::Test {
protected:
    /// Both ways to write one document of `count` elements, of which `expected` are expected at first.
    void writeBoth(int count, int expected) {
        PackagePart tree;
        StreamedPart part(folder.path("streamed.xml"));
        const pugi::xml_node listOfTree = appendFrame(tree.document());
        const pugi::xml_node listOfStream = appendFrame(part.document());
        setAttribute(listOfTree, "count", std::to_string(count));
        setAttribute(listOfStream, "count", std::to_string(expected));
        XmlStream& stream = part.begin(listOfStream);
        for (int i = 0; i < count; ++i) {
            const std::string text = "text " + std::to_string(i);
            appendTextElement(listOfTree, "item", text);
            stream.begin("item").text(text).end();
        }
        setAttribute(listOfStream, "count", std::to_string(count));
        EXPECT_EQ(tree.write(folder.path("tree.xml")), "");
        EXPECT_EQ(part.finish(), "");
    }

    static pugi::xml_node appendFrame(pugi::xml_document& document) {
        const pugi::xml_node root = appendElement(document, "root");
        appendElement(root, "before");
        const pugi::xml_node list = appendElement(root, "list");
        appendElement(root, "after");
        return list;
    }

    ExportFolder folder;
};

TEST_F(StreamedPartTest, BytesAreThoseOfATree) {
    for (const int count : {0, 1, 3, 50'000}) {
        writeBoth(count, count);
        EXPECT_EQ(fileText(folder.path("streamed.xml")), fileText(folder.path("tree.xml"))) << count;
    }
}

TEST_F(StreamedPartTest, WhatPrecedesMayChangeAfterwards) {
    for (const int count : {0, 1, 3, 50'000}) {
        writeBoth(count, 1000);
        EXPECT_EQ(fileText(folder.path("streamed.xml")), fileText(folder.path("tree.xml"))) << count;
    }
}

TEST_F(StreamedPartTest, NothingElseIsLeftInTheFolder) {
    writeBoth(50'000, 7);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"streamed.xml", "tree.xml"}));
}

TEST_F(StreamedPartTest, MissingFolderIsAFailureHoweverMuchIsStreamed) {
    for (const int count : {0, 1, 50'000}) {
        StreamedPart part(folder.path("missing/part.xml"));
        pugi::xml_node root = appendElement(part.document(), "root");
        XmlStream& stream = part.begin(root);
        for (int i = 0; i < count; ++i) stream.begin("item").text("some text").end();
        if (count > 1) root.set_name("changed");
        EXPECT_NE(part.finish().find("missing/part.xml"), std::string::npos) << count;
    }
}

}  // namespace
}  // namespace ZkMobileBackup
