#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "base/Value.h"
#include "export/ExportRows.h"
#include "export/FileCreator.h"
#include "platform/XmlStream.h"

namespace ZkMobileBackup {

/// How the cells of one kind look: a style of the template, and their size in points.
struct BundleCellLook {
    const char* style;
    const char* width;
    const char* height;
};

/// What sets the table of one kind of document apart from those of the others.
struct BundleTable {
    const char* dataSourceId;  ///< null for none
    BundleCellLook header;
    BundleCellLook data;
    std::size_t columnLimit;  ///< keys from here on are not written
    bool heedsStop;           ///< whether a request to stop ends the table
    bool reportsInBatch;      ///< whether progress is put into the file's slice of the batch
};

extern const BundleTable kNumbersTable;
extern const BundleTable kNumbersOneRowTable;
extern const BundleTable kPagesTable;

/// Appends a header cell for each of the keys that the table has a column for.
void appendHeaderCells(XmlStream& dataSource, const BundleTable& table, std::span<const std::string> keys);

/// Streams the data source of a table. It lists filled cells only: a cell states how many positions it lies behind the
/// one before it, in a grid that is 256 columns wide whatever the document shows, unless it follows directly.
class BundleCells {
public:
    /// Appends the header cells and returns all column keys, which must outlive the table.
    using HeaderStep = std::function<std::span<const std::string>()>;

    /// Texts of cells, the request to stop and the delegate that hears of progress are those of `writer`.
    BundleCells(const BundleTable& table, FileCreator& writer, XmlStream& grid);

    /// Writes the header and the first `dicCount` rows. Progress is reported after each of them.
    void writeTable(const Rows& rows, std::int32_t dicCount, const HeaderStep& header);

private:
    void appendRow(const Dictionary& row);
    std::int64_t toNextRow() const;
    void reportRow(std::size_t row, std::size_t count);

    const BundleTable& table_;
    FileCreator& writer_;
    XmlStream& dataSource_;
    std::span<const std::string> columns_;
    std::int64_t carry_ = 0;  // cells that the row before lacks at its end
};

}  // namespace ZkMobileBackup
