#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Api.h"
#include "export/ExportRows.h"
#include "export/FileCreator.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace ZkMobileBackup {

class PackagePart;
class XmlStream;

/// Writes the parts of a workbook with one sheet into the stage folder, which XlsxCreater lays out. Every cell is a
/// shared string of its own. Parts that the template lacks stay missing; what fails is noted, the rest is done.
class ZKMB_API WriteXlsxFile : public FileCreator {
public:
    // init
    static std::shared_ptr<WriteXlsxFile> init();
    ~WriteXlsxFile() override;

    /// The table to be written; none before writeXlsx.
    const Rows& DictionArr() const { return rows_; }
    /// The column keys of a sheet of several rows; empty until its header row is made.
    const std::vector<std::string>& DicKeyArr() const { return columnKeys_; }
    /// The index of the next shared string.
    std::uint32_t flag_v() const { return nextString_; }
    /// Shared strings written so far.
    std::uint32_t flag_count() const { return stringCount_; }

    // writeXlsx:
    /// Writes all parts for `rows`. The stop flag of this object, which XlsxCreater never sets, ends the sheet early.
    void writeXlsx(Rows rows);
    // writeXlsxRelsFile
    /// Edits the workbook's relationships, then the workbook and its styles.
    void writeXlsxRelsFile();
    // writeWorkbook
    /// Makes the sheet the only one of the workbook.
    void writeWorkbook();
    // writeStyles
    /// Replaces the cell formats by the two that cells use, or may use.
    void writeStyles();
    // writeContentXml
    /// Edits the content types of the package.
    void writeContentXml();
    // writeXlsxFile
    /// Writes the sheet and the shared strings.
    void writeXlsxFile();

    // writeContentOfsheet:sharedString:
    /// Writes the sheet to `path`, its texts to the shared strings.
    void writeContentOfsheet(const std::string& path, XmlStream& sharedString);
    // writeContentOfSheetRels:
    /// Writes the relationships of the sheet to `path`.
    void writeContentOfSheetRels(const std::string& path);
    // getSheetViews, getpageMargins, getpageSetup
    /// Each adds the element of its name to the worksheet element.
    void getSheetViews(pugi::xml_node worksheet) const;
    void getpageMargins(pugi::xml_node worksheet) const;
    void getpageSetup(pugi::xml_node worksheet) const;

    // getRowOne:haredString:dicCount:
    /// Writes the header row and the first `dicCount` rows until the stop flag is set, the columns being the keys of
    /// the rows, in truth of the only one, with the names in front. ("hared" stands for shared.)
    void getRowOne(XmlStream& sheetData, XmlStream& haredString, std::int32_t dicCount);
    // getRowNode:haredString:dicCount:
    /// Writes the header row and the first `dicCount` rows until the stop flag is set, the columns being the keys of
    /// all rows.
    void getRowNode(XmlStream& sheetData, XmlStream& haredString, std::int32_t dicCount);
    // setHeadRow:haredString:
    /// Takes the column keys from the rows and writes a header cell for each into the row that was begun.
    void setHeadRow(XmlStream& row, XmlStream& haredString);
    // reorderTitle:haredString:reorderArr:
    /// Writes a header cell for each key of `reorderArr` into the row that was begun.
    void reorderTitle(XmlStream& row, XmlStream& haredString, const std::vector<std::string>& reorderArr);
    // getAllKey
    /// The keys of all rows, in the order in which they are first seen; none before writeXlsx.
    std::vector<std::string> getAllKey() const;

protected:
    WriteXlsxFile();

private:
    using Columns = std::vector<std::string>;

    void editPart(const char* name, const std::function<void(PackagePart& part)>& edit);
    void removeTemplateSheets() const;
    std::size_t lineCount() const;
    void addAllRows(XmlStream& sheetData, XmlStream& haredString);
    void addRows(XmlStream& sheetData, XmlStream& haredString, std::int32_t dicCount, const Columns& columns,
                 const std::function<void()>& addHeader);
    void addDataCells(XmlStream& row, XmlStream& haredString, std::size_t position, const Columns& columns);
    void addCells(XmlStream& row, XmlStream& haredString, std::size_t rowNumber, const std::vector<std::string>& texts);
    void addCell(XmlStream& row, XmlStream& haredString, std::string reference, std::string_view text);

    Rows rows_;
    Columns allKeys_;
    Columns columnKeys_;
    std::uint32_t nextString_ = 0;
    std::uint32_t stringCount_ = 0;
    std::string lastCell_ = "A1";  // the cell that was written last
};

}  // namespace ZkMobileBackup
