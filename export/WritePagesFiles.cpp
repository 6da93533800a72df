#include "export/WritePagesFiles.h"

#include <algorithm>
#include <fmt/format.h>
#include <pugixml.hpp>
#include <span>
#include <utility>

#include "export/bundle_cells.h"
#include "export/bundle_index.h"
#include "export/column_keys.h"
#include "platform/Xml.h"

namespace ZkMobileBackup {

namespace {

constexpr std::int32_t kTemplateRows = 2;
constexpr std::int32_t kTemplateColumns = 2;

/// One direction of the page: landscape A4, which a table outgrows.
struct PageSide {
    double size;              // points
    std::int32_t outgrownAt;  // columns or rows from which on the page grows with each
    std::int32_t perCell;
    std::int32_t spared;  // what the smaller page covers of it
};

constexpr PageSide kWidth = {841.8897705078125, 10, 94, 846};
constexpr PageSide kHeight = {595.2755737304688, 13, 50, 600};

/// In the single precision in which page sizes have always been given.
std::string pageSize(const PageSide& side, std::int32_t cells) {
    double size = side.size;
    if (cells >= side.outgrownAt) size += static_cast<double>(side.perCell) * cells - side.spared;
    return fmt::format("{:.6f}", static_cast<double>(static_cast<float>(size)));
}

}  // namespace

std::shared_ptr<WritePagesFiles> WritePagesFiles::init() {
    return std::shared_ptr<WritePagesFiles>(new WritePagesFiles);
}

WritePagesFiles::WritePagesFiles() = default;
WritePagesFiles::~WritePagesFiles() = default;

void WritePagesFiles::writePages(const Rows& rows) {
    rows_ = rows;
    const std::string path = bundleIndexPath(kPagesPackage);
    PackagePart index(path);
    if (!index.failure().empty()) return noteFailure(index.failure());
    setXmlVersion(index.document());
    const pugi::xml_node document = index.first("sl:document");
    const pugi::xml_node grid = descendant(document, {10, 1, 0, 0, 2}).child("sf:grid");
    fillGrid(grid);
    writeSize(descendant(document, {3}), colNums(), static_cast<std::int32_t>(rows_.size()) + 1);
    noteFailure(writeBundleIndex(index, path, grid, std::exchange(streamDataSource_, {})));
}

void WritePagesFiles::fillGrid(pugi::xml_node grid) {
    const auto count = static_cast<std::int32_t>(rows_.size());
    const std::int32_t columns = colNums();
    renewAttributes(grid, {{"sf:ocnt", std::to_string(getsfOcnt())},
                           {"sf:numcols", std::to_string(columns)},
                           {"sf:numrows", std::to_string(count + 1)}});
    if (count > 0) getGridNode(grid, count, columns);
}

std::vector<std::string> WritePagesFiles::getAllKey() const {
    return unionOfKeys(rows_);
}

std::int32_t WritePagesFiles::colNums() const {
    return static_cast<std::int32_t>(std::min(getAllKey().size(), kPagesTable.columnLimit));
}

std::int32_t WritePagesFiles::getsfOcnt() const {
    std::size_t entries = 0;
    for (const Dictionary& row : rows_) entries += row.size();
    return static_cast<std::int32_t>(entries);
}

void WritePagesFiles::setHeadNode(XmlStream& dataSource) {
    columnKeys_ = withNamesFirst(getAllKey());
    appendHeaderCells(dataSource, kPagesTable, columnKeys_);
}

void WritePagesFiles::getGridNode(pugi::xml_node grid, std::int32_t dicCount, std::int32_t numCols) {
    renewDataSource(grid);
    if (dicCount >= kTemplateRows) setRows(grid, dicCount);
    if (numCols > kTemplateColumns) setColums(grid, numCols);
    streamDataSource_ = [this, dicCount](XmlStream& stream) {
        BundleCells(kPagesTable, *this, stream).writeTable(rows_, dicCount, [&] {
            setHeadNode(stream);
            return std::span(columnKeys_);
        });
    };
}

void WritePagesFiles::setRows(pugi::xml_node grid, std::int32_t DicCount) const {
    growList(descendant(grid, {2}), DicCount + 1, DicCount + 1 - kTemplateRows, "sf:grid-row",
             {{"sf:height", "38.196876525878906"},
              {"sf:preferred-height", "38.196876525878906"},
              {"sf:fitting-height", "25"},
              {"sf:nc", "1"},
              {"sf:ncoc", "1"}});
}

void WritePagesFiles::setColums(pugi::xml_node grid, std::int32_t numCols) const {
    growList(
        descendant(grid, {0}), numCols, numCols - kTemplateColumns, "sf:grid-column",
        {{"sf:width", "80.787406921386719"}, {"sf:preferred-width", "80.787406921386719"}, {"sf:fitting-width", "9"}});
}

void WritePagesFiles::writeSize(pugi::xml_node page, std::int32_t numcols, std::int32_t numrows) const {
    renewAttributes(page, {{"sl:page-width", pageSize(kWidth, numcols)},
                           {"sl:page-height", pageSize(kHeight, numrows)},
                           {"sl:page-scale", "1"}});
}

}  // namespace ZkMobileBackup
