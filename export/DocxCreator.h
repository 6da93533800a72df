#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Api.h"
#include "export/PackagedCreator.h"

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

namespace ZkMobileBackup {

class PackagePart;
class TableInsert;
class XmlStream;

/// Writes a table as a text document of one table. Columns are the keys of all rows, at most 28 of them, in reverse
/// order. Asked to stop it ends behind the row in hand.
class ZKMB_API DocxCreator : public PackagedCreator {
public:
    // initWithDictionary:SavePath:
    /// A writer of `rows` (a list of dictionaries, whatever the name says) to `savePath`, a path without extension.
    static std::shared_ptr<DocxCreator> initWithDictionary(Rows rows, std::string savePath);
    ~DocxCreator() override;

    /// The column keys in the order in which they are first seen; empty until the header row is made.
    const std::vector<std::string>& DicKeyArr() const { return columnKeys_; }
    /// What makes the head of the table.
    const std::shared_ptr<TableInsert>& table() const { return table_; }

    // initDocxFile
    /// Lays out the stage folder: the template with an empty body and with types for pictures.
    void initDocxFile();
    // insertContentXmlOfImage
    /// Adds the types of PNG and JPEG pictures to the content types of the package in the stage folder.
    void insertContentXmlOfImage();
    // writeWordFiles
    /// Adds all that the document holds to the body in the stage folder.
    void writeWordFiles();

    // Each of the two makes a new element at the end of the writer's scratch document, to be copied from there.
    // writeReturn:
    /// An empty paragraph; its line is as high as the text says, in twentieths of a point.
    pugi::xml_node writeReturn(const std::string& lineSpacing);
    // writeEndSectPrNode
    /// The properties of the only section: one wide page.
    pugi::xml_node writeEndSectPrNode();

    // Each of these adds to the element in hand of a stream, so that a table of any size needs no memory.
    // setTableNode
    /// The table; nothing without rows.
    void setTableNode(XmlStream& body);
    // SetTable:dicCount:
    /// The content of the table: its head, the header row and the first `dicCount` rows, until the stop flag is set.
    void SetTable(XmlStream& table, std::int32_t dicCount);
    // setHeadNode:
    /// Takes the column keys from all rows and adds a cell for each to the header row.
    void setHeadNode(XmlStream& row);
    // getWtcNode
    /// Begins a cell with its properties. The caller adds its paragraph and ends it.
    void getWtcNode(XmlStream& row) const;
    // getWtcBorder
    /// The borders of a cell.
    void getWtcBorder(XmlStream& properties) const;

    // getAllKey
    /// Every key of every row, in the order in which they are first seen.
    std::vector<std::string> getAllKey() const;

protected:
    DocxCreator(Rows rows, std::string savePath);
    void prepareStage() override;
    void writeParts() override;

private:
    void emptyBody();
    pugi::xml_node elementOf(const PackagePart& part, const char* name);
    void addDataRow(XmlStream& row, const Dictionary& cells) const;
    void addCell(XmlStream& row, std::string_view text) const;
    std::int32_t gridColumnCount() const;
    std::size_t columnCount() const;

    std::vector<std::string> columnKeys_;
    std::shared_ptr<TableInsert> table_;
    std::unique_ptr<pugi::xml_document> scratch_;
};

}  // namespace ZkMobileBackup
