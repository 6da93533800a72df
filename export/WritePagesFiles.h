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

/// Writes the part of a Pages document that holds the table: `index.xml` of the stage folder, as the template left it
/// there. The data source of the table is streamed as in WriteNumberFiles.
class ZKMB_API WritePagesFiles : public FileCreator {
public:
    // init
    static std::shared_ptr<WritePagesFiles> init();
    ~WritePagesFiles() override;

    /// The column keys in order, also those that find no column; empty until the header is written.
    const std::vector<std::string>& DicKeyArr() const { return columnKeys_; }

    // writePages:
    /// Fills the table, fits the page to it and writes the part; without rows the cells stay as they are in the
    /// template. An object writes one part.
    void writePages(const Rows& rows);
    // getAllKey
    /// Every key of every row, in the order in which they are first seen.
    std::vector<std::string> getAllKey() const;
    // colNums
    /// The number of columns: one for each key, at most 60.
    std::int32_t colNums() const;
    // getsfOcnt
    /// The number of entries of all rows, those that find no column included.
    std::int32_t getsfOcnt() const;
    // setHeadNode:
    /// Settles the column keys, names first, and appends the header cells to the data source.
    void setHeadNode(XmlStream& dataSource);
    // getGridNode:dicCount:numCols:
    /// Fills the grid with the first `dicCount` rows, whatever the stop flag says, and grows it to fit.
    void getGridNode(pugi::xml_node grid, std::int32_t dicCount, std::int32_t numCols);
    // setRows:DicCount:
    /// Grows a grid of two rows to a header and `DicCount` rows.
    void setRows(pugi::xml_node grid, std::int32_t DicCount) const;
    // setColums:numCols:
    /// Grows a grid of two columns to `numCols`.
    void setColums(pugi::xml_node grid, std::int32_t numCols) const;
    // writeSize:numcols:numrows:
    /// Sets the size of the page, in points: landscape A4, wider from 10 columns on and longer from 13 rows on, the
    /// header being one of them.
    void writeSize(pugi::xml_node page, std::int32_t numcols, std::int32_t numrows) const;

protected:
    WritePagesFiles();

private:
    void fillGrid(pugi::xml_node grid);

    Rows rows_;
    std::vector<std::string> columnKeys_;
    std::function<void(XmlStream&)> streamDataSource_;  // empty as long as the template's own stays
};

}  // namespace ZkMobileBackup
