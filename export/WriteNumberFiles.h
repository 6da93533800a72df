#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Api.h"
#include "export/ExportRows.h"
#include "export/FileCreator.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace ZkMobileBackup {

class XmlStream;

/// Writes the part of a Numbers document that holds the table: `index.xml` of the stage folder, as the template left it
/// there.
///
/// The data source of the table has an element for every cell. It is never a tree, but streamed when the part is
/// written, and progress is reported then; in the tree an empty element stands in its place.
class ZKMB_API WriteNumberFiles : public FileCreator {
public:
    // init
    static std::shared_ptr<WriteNumberFiles> init();
    ~WriteNumberFiles() override;

    /// The column keys in order; empty until the header of a table of two or more rows is written.
    const std::vector<std::string>& DicKeyArr() const { return columnKeys_; }

    // writeNumbers:
    /// Fills the table and writes the part; without rows the table stays as it is in the template. An object writes one
    /// part.
    void writeNumbers(const Rows& rows);
    // getAllKey
    /// Every key of every row, in the order in which they are first seen.
    std::vector<std::string> getAllKey() const;
    // setHeadRow:sfanonstyles:
    /// Settles the column keys, names first, and appends the header cells to the data source. The styles stay as they
    /// are.
    void setHeadRow(XmlStream& dataSource, pugi::xml_node sfanonstyles);
    // reorderTitle:reorderArr:
    /// Appends a header cell for each key, in order, to the data source.
    void reorderTitle(XmlStream& dataSource, const std::vector<std::string>& reorderArr) const;
    // getGridOne:sfanonstyles:dicCount:
    /// Fills the grid of a table of one row. The file's place in its batch and a request to stop count for nothing
    /// here, and DicKeyArr stays as it is.
    void getGridOne(pugi::xml_node grid, pugi::xml_node sfanonstyles, std::int32_t dicCount);
    // getGridNode:sfanonstyles:dicCount:
    /// Fills the grid with the first `dicCount` rows, until the stop flag is set, and adds grid rows where the
    /// template's do not suffice.
    void getGridNode(pugi::xml_node grid, pugi::xml_node sfanonstyles, std::int32_t dicCount);

protected:
    WriteNumberFiles();

private:
    void fillGrid(pugi::xml_node document, pugi::xml_node grid);

    Rows rows_;
    std::vector<std::string> columnKeys_;
    std::function<void(XmlStream&)> streamDataSource_;  // empty as long as the template's own stays
};

}  // namespace ZkMobileBackup
