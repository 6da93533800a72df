#pragma once

#include <cstdlib>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <map>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "base/Resources.h"
#include "export/PackagePart.h"
#include "tests/export/ExportTesting.h"
#include "tests/export/ZipTesting.h"

namespace ZkMobileBackup {

/// A row with these keys; the text of each is its key in lower case followed by `mark`.
inline Dictionary rowOf(const std::vector<std::string>& keys, const std::string& mark = "") {
    Dictionary row;
    for (const std::string& key : keys) row.set(key, std::string(1, static_cast<char>(key[0] | 0x20)) + mark);
    return row;
}

/// `count` keys: K0, K1, ...
inline std::vector<std::string> manyKeys(std::size_t count) {
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < count; ++i) keys.push_back(fmt::format("K{}", i));
    return keys;
}

inline Rows equalRows(std::size_t count, const Dictionary& row) {
    return Rows(std::vector<Dictionary>(count, row));
}

/// The cells of a data source that have this style, each as "advance:text"; the advance is empty where none is stated.
inline std::vector<std::string> cellsWithStyle(pugi::xml_node dataSource, const std::string& style) {
    std::vector<std::string> cells;
    for (const pugi::xml_node cell : dataSource.children("sf:t")) {
        if (cell.attribute("sf:s").value() != style) continue;
        cells.push_back(cell.attribute("sf:ct").value() + std::string(":") +
                        cell.child("sf:ct").attribute("sfa:s").value());
    }
    return cells;
}

/// A document as it was packed.
class Bundle {
public:
    Bundle(const std::string& package, const std::string& scratch) {
        const Unpacked unpacked = unpack(package, scratch);
        EXPECT_TRUE(unpacked.result) << package;
        if (unpacked.files.contains("index.xml")) setIndex(unpacked.files.at("index.xml"));
    }
    explicit Bundle(const std::string& index) { setIndex(index); }

    const std::string& text() const { return text_; }
    pugi::xml_node root() const { return index_.document_element(); }
    pugi::xml_node grid() const { return firstNamed("sf:grid"); }
    pugi::xml_node columns() const { return grid().child("sf:columns"); }
    pugi::xml_node rows() const { return grid().child("sf:rows"); }
    pugi::xml_node dataSource() const { return grid().child("sf:datasource"); }
    pugi::xml_node firstNamed(const std::string& name) const {
        return index_.find_node([&](pugi::xml_node node) { return node.name() == name; });
    }

private:
    void setIndex(const std::string& index) {
        text_ = index;
        EXPECT_TRUE(index_.load_string(index.c_str()));
    }

    std::string text_;
    pugi::xml_document index_;
};

inline std::size_t countOf(pugi::xml_node list, const char* name) {
    const auto children = list.children(name);
    return static_cast<std::size_t>(std::distance(children.begin(), children.end()));
}

/// Names and values of the attributes of an element, in order.
inline std::vector<std::string> attributesOf(pugi::xml_node element) {
    std::vector<std::string> attributes;
    for (const pugi::xml_attribute attribute : element.attributes()) {
        attributes.push_back(std::string(attribute.name()) + "=" + attribute.value());
    }
    return attributes;
}

/// Folders of their own for documents and stage folders, and a delegate. The built templates are used.
class BundleTest : public testing::Test {
protected:
    BundleTest() { setenv("XDG_DATA_HOME", data.path().c_str(), 1); }
    ~BundleTest() override {
        setResourceFolder("");
        unsetenv("XDG_DATA_HOME");
    }

    std::string stagePath(const std::string& name) const { return data.path("ZkMobileBackup/" + name); }
    /// Names that stand in the folder of stage folders, locks apart.
    std::vector<std::string> stageFolders() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(stagePath(""))) {
            if (entry.is_directory()) names.push_back(entry.path().filename());
        }
        return names;
    }
    std::string target() const { return folder.path("Table"); }

    TemporaryFolder data;
    ExportFolder folder;
    TemporaryFolder unpacked;
    RecordingWriterDelegate delegate;
};

using Texts = std::vector<std::string>;

}  // namespace ZkMobileBackup
