#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Api.h"
#include "export/ExportRows.h"
#include "export/FileCreator.h"

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

namespace ZkMobileBackup {

/// Writes a table as one XHTML 1.0 Transitional page. Columns are the keys of the first row in reverse order.
class ZKMB_API HtmlCreator : public FileCreator {
public:
    // initWithDictionary:SavePath:
    /// A writer of `rows` (a list of dictionaries, whatever the name says) to `savePath`, a path without extension.
    static std::shared_ptr<HtmlCreator> initWithDictionary(Rows rows, std::string savePath);
    ~HtmlCreator() override;

    /// The table to be written.
    const Rows& DictionArr() const { return rows_; }
    /// The output path without extension.
    const std::string& SavePath() const { return savePath_; }
    /// The column keys in the order of the first row; empty until the header row is made.
    const std::vector<std::string>& DicKeyArr() const { return columnKeys_; }

    // startConvert
    void startConvert() override;
    // writeHtml
    /// Builds the page and writes it to the first free name. Once stopped it writes nothing and reports
    /// extportComplete(false).
    void writeHtml();
    // headNode:
    /// Adds the content type and the title, which is the name of the file, to the head element.
    void headNode(pugi::xml_node head) const;
    // getTableNode
    /// A new table element, at the end of the writer's document; null when there are no rows.
    pugi::xml_node getTableNode();
    // SetTable:dicCount:
    /// Adds the header row and the first `dicCount` rows to the table, until the stop flag is set.
    void SetTable(pugi::xml_node table, std::int32_t dicCount);
    // setThNode:
    /// Takes the column keys from the first row and adds a header cell for each to the row element.
    void setThNode(pugi::xml_node row);
    // getAllKey
    /// The keys of the first row, none without rows.
    std::vector<std::string> getAllKey() const;

protected:
    HtmlCreator(Rows rows, std::string savePath);

private:
    pugi::xml_node beginDocument();
    void addDataRow(pugi::xml_node row, const Dictionary& cells) const;

    Rows rows_;
    std::string savePath_;
    std::vector<std::string> columnKeys_;
    std::vector<std::string> columnClasses_;  // the keys in lower case
    std::unique_ptr<pugi::xml_document> document_;
};

}  // namespace ZkMobileBackup
