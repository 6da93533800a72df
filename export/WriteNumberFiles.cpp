#include "export/WriteNumberFiles.h"

#include <pugixml.hpp>
#include <span>
#include <utility>

#include "export/bundle_cells.h"
#include "export/bundle_index.h"
#include "export/column_keys.h"
#include "platform/Xml.h"

namespace ZkMobileBackup {

namespace {

constexpr std::int32_t kTemplateDataRows = 49;

void growRows(pugi::xml_node grid, std::int32_t dataRows) {
    if (dataRows <= kTemplateDataRows) return;
    setAttribute(grid, "sf:numrows", std::to_string(dataRows + 1));
    growList(descendant(grid, {2}), dataRows + 1, dataRows - kTemplateDataRows, "sf:grid-row",
             {{"sf:height", "14.25"}, {"sf:fitting-height", "14.25"}});
}

}  // namespace

std::shared_ptr<WriteNumberFiles> WriteNumberFiles::init() {
    return std::shared_ptr<WriteNumberFiles>(new WriteNumberFiles);
}

WriteNumberFiles::WriteNumberFiles() = default;
WriteNumberFiles::~WriteNumberFiles() = default;

void WriteNumberFiles::writeNumbers(const Rows& rows) {
    rows_ = rows;
    const std::string path = bundleIndexPath(kNumbersPackage);
    PackagePart index(path);
    if (!index.failure().empty()) return noteFailure(index.failure());
    setXmlVersion(index.document());
    const pugi::xml_node document = index.first("ls:document");
    const pugi::xml_node grid = descendant(document, {2, 0, 0, 1, 1, 1, 0, 2}).child("sf:grid");
    fillGrid(document, grid);
    noteFailure(writeBundleIndex(index, path, grid, std::exchange(streamDataSource_, {})));
}

void WriteNumberFiles::fillGrid(pugi::xml_node document, pugi::xml_node grid) {
    const pugi::xml_node styles = descendant(document, {0, 1});
    const auto count = static_cast<std::int32_t>(rows_.size());
    if (count == 1) getGridOne(grid, styles, count);
    if (count >= 2) getGridNode(grid, styles, count);
}

std::vector<std::string> WriteNumberFiles::getAllKey() const {
    return unionOfKeys(rows_);
}

void WriteNumberFiles::setHeadRow(XmlStream& dataSource, pugi::xml_node /*sfanonstyles*/) {
    columnKeys_ = withNamesFirst(getAllKey());
    reorderTitle(dataSource, columnKeys_);
}

void WriteNumberFiles::reorderTitle(XmlStream& dataSource, const std::vector<std::string>& reorderArr) const {
    appendHeaderCells(dataSource, kNumbersTable, reorderArr);
}

void WriteNumberFiles::getGridOne(pugi::xml_node grid, pugi::xml_node /*sfanonstyles*/, std::int32_t dicCount) {
    renewDataSource(grid);
    streamDataSource_ = [this, dicCount](XmlStream& stream) {
        const std::vector<std::string> keys = withNamesFirst(getAllKey());
        BundleCells(kNumbersOneRowTable, *this, stream).writeTable(rows_, dicCount, [&] {
            reorderTitle(stream, keys);
            return std::span(keys);
        });
    };
}

void WriteNumberFiles::getGridNode(pugi::xml_node grid, pugi::xml_node sfanonstyles, std::int32_t dicCount) {
    renewDataSource(grid);
    growRows(grid, dicCount);
    streamDataSource_ = [this, dicCount, sfanonstyles](XmlStream& stream) {
        BundleCells(kNumbersTable, *this, stream).writeTable(rows_, dicCount, [&] {
            setHeadRow(stream, sfanonstyles);
            return std::span(columnKeys_);
        });
    };
}

}  // namespace ZkMobileBackup
