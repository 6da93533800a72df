#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <plist/plist.h>
#include <string>
#include <vector>

#include "platform/PropertyList.h"
#include "platform/property_list_limits.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

std::string xml(const std::string& root) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Example//DTD PLIST 1.0//EN\" \"http://example.com/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           root + "\n</plist>\n";
}

std::string xmlDictionary(const std::string& entries) {
    return xml("<dict>" + entries + "</dict>");
}

/// The value under "k" of a dictionary that has this element there.
Value xmlValue(const std::string& element) {
    const auto read = parsePropertyList(xmlDictionary("<key>k</key>" + element));
    const Value* value = read ? read->find("k") : nullptr;
    return value != nullptr ? *value : Value("(nothing)");
}

struct FreePlist {
    void operator()(void* node) const { plist_free(node); }
};
using Plist = std::unique_ptr<void, FreePlist>;

/// One value of every kind but data, whose bytes are compared by themselves.
Plist everyKind() {
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "text", plist_new_string("Ünïcode ☎"));
    plist_dict_set_item(root, "ascii", plist_new_string("plain"));
    plist_dict_set_item(root, "number", plist_new_uint(70000));
    plist_dict_set_item(root, "negative", plist_new_uint(static_cast<std::uint64_t>(-5)));
    plist_dict_set_item(root, "true", plist_new_bool(1));
    plist_dict_set_item(root, "false", plist_new_bool(0));
    plist_dict_set_item(root, "real", plist_new_real(1.5));
    plist_dict_set_item(root, "date", plist_new_date(325944000, 0));
    plist_t list = plist_new_array();
    plist_array_append_item(list, plist_new_string("a"));
    plist_array_append_item(list, plist_new_uint(2));
    plist_dict_set_item(root, "list", list);
    plist_t inner = plist_new_dict();
    plist_dict_set_item(inner, "x", plist_new_string("y"));
    plist_dict_set_item(root, "dict", inner);
    return Plist(root);
}

Dictionary everyKindAsRead() {
    return {{"text", "Ünïcode ☎"},
            {"ascii", "plain"},
            {"number", 70000},
            {"negative", -5},
            {"true", 1},
            {"false", 0},
            {"real", 1.5},
            {"date", Date{1304251200}},
            {"list", Array{"a", 2}},
            {"dict", Dictionary{{"x", "y"}}}};
}

std::string xmlOf(plist_t root) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root, &text, &length);
    std::string xml(text, length);
    plist_to_xml_free(text);
    return xml;
}

std::string binaryOf(plist_t root) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    std::string binary(bytes, length);
    plist_to_bin_free(bytes);
    return binary;
}

/// A binary list whose objects are put together by hand; references and offsets take four bytes.
class BinaryBuilder {
public:
    BinaryBuilder() { bytes_.text("bplist00"); }

    /// Appends an object that refers to others by their number.
    BinaryBuilder& object(unsigned marker, const std::vector<std::uint32_t>& references) {
        startObject();
        bytes_.u8(marker);
        for (const std::uint32_t reference : references) bytes_.u32(reference);
        return *this;
    }
    BinaryBuilder& text(const std::string& text) {
        startObject();
        bytes_.u8(0x5F).u8(0x12).u32(static_cast<std::uint32_t>(text.size())).text(text);
        return *this;
    }
    std::string finish(std::uint64_t root) {
        const std::size_t table = bytes_.size();
        for (const std::uint32_t offset : offsets_) bytes_.u32(offset);
        bytes_.fill(6).u8(4).u8(4).u64(offsets_.size()).u64(root).u64(table);
        return {bytes_.bytes().begin(), bytes_.bytes().end()};
    }

private:
    void startObject() { offsets_.push_back(static_cast<std::uint32_t>(bytes_.size())); }

    ByteBuilder bytes_;
    std::vector<std::uint32_t> offsets_;
};

constexpr unsigned kArrayOf1 = 0xA1;
constexpr unsigned kArrayOf2 = 0xA2;
constexpr unsigned kDictionaryOf1 = 0xD1;

/// A dictionary "k" whose value is a chain of arrays, each in the one before.
std::string binaryChain(std::uint32_t length) {
    BinaryBuilder builder;
    builder.object(kDictionaryOf1, {1, 2}).text("k");
    for (std::uint32_t i = 0; i < length; ++i) builder.object(kArrayOf1, {i + 3});
    builder.text("end");
    return builder.finish(0);
}

TEST(PropertyList, EveryOtherKindOfValueIsReadFromXml) {
    EXPECT_EQ(parsePropertyList(xmlOf(everyKind().get())), everyKindAsRead());
}

TEST(PropertyList, EveryOtherKindOfValueIsReadFromBinary) {
    EXPECT_EQ(parsePropertyList(binaryOf(everyKind().get())), everyKindAsRead());
}

TEST(PropertyList, DataIsBytes) {
    const Plist root(plist_new_dict());
    plist_dict_set_item(root.get(), "data", plist_new_data("\0\xFF", 2));
    plist_dict_set_item(root.get(), "empty", plist_new_data("", 0));
    for (const std::string& list : {xmlOf(root.get()), binaryOf(root.get())}) {
        const Dictionary read = parsePropertyList(list).value();
        EXPECT_THAT(**read.find("data")->bytes(), ElementsAre(0, 0xFF));
        EXPECT_TRUE((*read.find("empty")->bytes())->empty());
    }
}

TEST(PropertyList, FileIsReadLikeItsBytes) {
    const TemporaryFolder folder;
    writeText(folder.path("Info.plist"), binaryOf(everyKind().get()));
    EXPECT_EQ(readPropertyList(folder.path("Info.plist")), everyKindAsRead());
}

TEST(PropertyList, KeysKeepTheirOrder) {
    const auto read = parsePropertyList(xmlDictionary("<key>z</key><true/><key>a</key><true/><key>m</key><true/>"));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(*read, (Dictionary{{"z", 1}, {"a", 1}, {"m", 1}}));
}

TEST(PropertyList, EmptyDictionaryIsADictionary) {
    EXPECT_EQ(parsePropertyList(xml("<dict/>")), Dictionary());
}

TEST(PropertyList, TextsAreUnescapedAndKeepTheirBlanks) {
    EXPECT_EQ(xmlValue("<string>a &lt;b&gt; &amp; &quot;c&quot; &#xE9;</string>"), Value("a <b> & \"c\" é"));
    EXPECT_EQ(xmlValue("<string>  x\n y </string>"), Value("  x\n y "));
    EXPECT_EQ(xmlValue("<string>   </string>"), Value("   "));
    EXPECT_EQ(xmlValue("<string></string>"), Value(""));
}

TEST(PropertyList, CharacterDataSectionIsText) {
    EXPECT_EQ(xmlValue("<string><![CDATA[<array>]]></string>"), Value("<array>"));
}

TEST(PropertyList, CommentsAreNotPartOfIt) {
    EXPECT_EQ(xmlValue("<!-- <array> --><string>x</string>"), Value("x"));
}

TEST(PropertyList, ByteOrderMarkIsNoHindrance) {
    EXPECT_EQ(parsePropertyList("\xEF\xBB\xBF" + xmlDictionary("<key>k</key><true/>")), (Dictionary{{"k", 1}}));
}

TEST(PropertyList, TextThatIsNoUtf8InABinaryListIsMadeWellFormed) {
    BinaryBuilder builder;
    builder.object(kDictionaryOf1, {1, 2}).text("k").text("a\xFFz");
    EXPECT_EQ(parsePropertyList(builder.finish(0)), (Dictionary{{"k", "a\uFFFDz"}}));
}

TEST(PropertyList, RootThatIsNoDictionaryGivesNothing) {
    for (const char* root : {"<array/>", "<string>x</string>", "<integer>5</integer>", "<true/>", ""}) {
        EXPECT_EQ(parsePropertyList(xml(root)), std::nullopt) << root;
    }
    const Plist array(plist_new_array());
    EXPECT_EQ(parsePropertyList(binaryOf(array.get())), std::nullopt);
}

TEST(PropertyList, WhatIsNoPropertyListGivesNothing) {
    for (const std::string& bytes :
         {std::string(), std::string("hello"), std::string("<"), std::string("<html><body/></html>"),
          std::string("bplist"), std::string("bplist00"), std::string(1000, '\0'),
          "bplist00" + std::string(100, '\xFF')}) {
        EXPECT_EQ(parsePropertyList(bytes), std::nullopt) << bytes.substr(0, 20);
    }
}

TEST(PropertyList, UnreadableFileGivesNothing) {
    const TemporaryFolder folder;
    EXPECT_EQ(readPropertyList(folder.path("missing")), std::nullopt);
    EXPECT_EQ(readPropertyList(folder.path()), std::nullopt);
}

TEST(PropertyList, FileOverTheLimitGivesNothing) {
    const TemporaryFolder folder;
    const std::string list = xmlDictionary("<key>k</key><true/>");
    writeText(folder.path("fits"), list + std::string(kLargestPropertyList - list.size(), ' '));
    writeText(folder.path("too large"), list + std::string(kLargestPropertyList - list.size() + 1, ' '));
    EXPECT_TRUE(readPropertyList(folder.path("fits")).has_value());
    EXPECT_EQ(readPropertyList(folder.path("too large")), std::nullopt);
}

TEST(PropertyList, TruncatedListsNeverCrash) {
    for (const std::string& whole : {xmlOf(everyKind().get()), binaryOf(everyKind().get())}) {
        for (std::size_t length = 0; length < whole.size(); ++length) {
            // An exact allocation, so that reading past the end is seen.
            const std::vector<char> part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            const auto read = parsePropertyList({part.data(), part.size()});
            EXPECT_TRUE(!read || read->size() <= everyKindAsRead().size());
        }
    }
}

TEST(PropertyList, ChangedBytesNeverCrash) {
    for (const std::string& whole : {xmlOf(everyKind().get()), binaryOf(everyKind().get())}) {
        for (std::size_t i = 0; i < whole.size(); ++i) {
            for (const unsigned change : {0x01U, 0x10U, 0x80U, 0xFFU}) {
                std::string bytes = whole;
                bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) ^ change);
                const auto read = parsePropertyList(bytes);
                EXPECT_TRUE(!read || read->size() <= everyKindAsRead().size());
            }
        }
    }
}

TEST(PropertyList, XmlNestedTooDeepGivesNothing) {
    const auto nested = [](std::size_t depth) {
        return xmlDictionary("<key>k</key>" + repeated("<array>", depth) + repeated("</array>", depth));
    };
    EXPECT_TRUE(parsePropertyList(nested(100)).has_value());
    EXPECT_EQ(parsePropertyList(nested(200)), std::nullopt);
    EXPECT_EQ(parsePropertyList(nested(500000)), std::nullopt);
}

TEST(PropertyList, DepthCannotBeHiddenFromTheCount) {
    const std::string deep = repeated("<array>", 300000);
    const std::string ends = repeated("</array>", 300000);
    for (const std::string& bytes : {xmlDictionary("<key>k</key>" + repeated("<array><!-- </array> -->", 100000)),
                                     xmlDictionary("<key>k</key>" + deep + "<!-- " + ends + " -->"),
                                     xmlDictionary("<key>k</key><string a=\"" + deep + "\">x</string>"),
                                     xmlDictionary("<key>k</key><string><![CDATA[" + deep + "]]></string>"),
                                     "<!DOCTYPE plist [ \"]>" + deep + "\" ]><plist version=\"1.0\"><dict/></plist>"}) {
        const auto read = parsePropertyList(bytes);
        EXPECT_TRUE(!read || read->size() <= 1);
    }
}

TEST(PropertyList, XmlWithTooManyElementsGivesNothing) {
    const auto list = [](std::size_t count) {
        return xmlDictionary("<key>k</key><array>" + repeated("<true/>", count) + "</array>");
    };
    EXPECT_TRUE(parsePropertyList(list(kMostPropertyListNodes / 2)).has_value());
    EXPECT_EQ(parsePropertyList(list(kMostPropertyListNodes)), std::nullopt);
}

TEST(PropertyList, BinaryNestedTooDeepGivesNothing) {
    EXPECT_TRUE(parsePropertyList(binaryChain(100)).has_value());
    EXPECT_EQ(parsePropertyList(binaryChain(200)), std::nullopt);
    EXPECT_EQ(parsePropertyList(binaryChain(100000)), std::nullopt);
}

TEST(PropertyList, BinaryObjectThatContainsItselfGivesNothing) {
    BinaryBuilder builder;
    builder.object(kDictionaryOf1, {1, 0}).text("k");
    EXPECT_EQ(parsePropertyList(builder.finish(0)), std::nullopt);
}

TEST(PropertyList, BinaryObjectsThatDoubleAtEachLevelGiveNothing) {
    BinaryBuilder builder;
    builder.object(kDictionaryOf1, {1, 2}).text("k");
    for (std::uint32_t i = 0; i < 60; ++i) builder.object(kArrayOf2, {i + 3, i + 3});
    builder.text("end");
    EXPECT_EQ(parsePropertyList(builder.finish(0)), std::nullopt);
}

TEST(PropertyList, LargeTextReferredToManyTimesGivesNothing) {
    BinaryBuilder builder;
    builder.object(kDictionaryOf1, {1, 2}).text("k");
    builder.object(0xAE, {3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3});
    builder.object(0xAE, {4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4});
    builder.text(std::string(1000000, 'x'));
    EXPECT_EQ(parsePropertyList(builder.finish(0)), std::nullopt);
}

TEST(PropertyList, BinarySizesPastTheEndGiveNothing) {
    for (const unsigned marker : {0x4FU, 0x5FU, 0x6FU, 0xAFU, 0xCFU, 0xDFU}) {
        ByteBuilder bytes;
        bytes.text("bplist00").bytes({0xD1, 1, 2, 0x51, 'k'}).u8(marker).u8(0x13).u64(0xFFFFFFFFFFFFFFFF);
        const std::size_t table = bytes.size();
        bytes.bytes({8, 11, 13}).fill(6).u8(1).u8(1).u64(3).u64(0).u64(table);
        const std::string list(bytes.bytes().begin(), bytes.bytes().end());
        EXPECT_EQ(parsePropertyList(list), std::nullopt) << marker;
    }
}

}  // namespace
}  // namespace ZkMobileBackup
