#include "export/WriteXlsxFile.h"

#include <algorithm>
#include <fmt/format.h>
#include <pugixml.hpp>
#include <utility>

#include "base/Text.h"
#include "export/PackageFormat.h"
#include "export/PackagePart.h"
#include "export/StreamedPart.h"
#include "export/column_keys.h"
#include "export/progress.h"
#include "export/row_height.h"
#include "export/xlsx_profile.h"
#include "export/xlsx_text.h"
#include "platform/Files.h"
#include "platform/Xml.h"
#include "platform/XmlStream.h"

namespace ZkMobileBackup {

namespace {

constexpr const char* kMainNamespace = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr const char* kRelationshipsNamespace = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr const char* kPackageRelationshipsNamespace = "http://schemas.openxmlformats.org/package/2006/relationships";
constexpr const char* kContentTypeStart = "application/vnd.openxmlformats-officedocument.spreadsheetml.";

constexpr const char* kSheetPart = "xl/worksheets/sheet1.xml";
constexpr const char* kSheetRelationshipsPart = "xl/worksheets/_rels/sheet1.xml.rels";
constexpr const char* kSharedStringsPart = "xl/sharedStrings.xml";

/// The template begins its lists with so many entries for the writer to replace.
constexpr int kPlaceholders = 3;
constexpr int kTemplateSheets = 3;
/// Place of the list of sheets among the children of the workbook.
constexpr std::size_t kSheetsPosition = 3;

// Earlier releases claim this extent whatever the data; documents are compared with theirs.
constexpr const char* kClaimedDimension = "A1:L111";
constexpr const char* kClaimedSpans = "1:87";

constexpr std::size_t kColumnWidth = 21;      // in digits
constexpr std::size_t kLettersInColumn = 24;  // of usual texts, letters being less broad than digits
// Heights are in points.
constexpr std::size_t kRowHeight = 15;
constexpr std::size_t kFurtherLineHeight = 14;
constexpr std::size_t kHighestRow = 409;  // readers take no higher one
constexpr std::size_t kMostLines = 1 + (kHighestRow - kRowHeight) / kFurtherLineHeight;

constexpr const char* kFirstCell = "A1";

std::string partPath(std::string_view name) {
    return stagePath(kXlsxPackage, name);
}

void removeChildren(pugi::xml_node parent, int count) {
    while (count-- > 0) parent.remove_child(PackagePart::child(parent, 0));
}

std::size_t childCount(pugi::xml_node parent) {
    std::size_t count = 0;
    while (PackagePart::child(parent, count)) ++count;
    return count;
}

void addRelationship(pugi::xml_node relationships, std::string_view id, std::string_view type,
                     std::string_view target) {
    const pugi::xml_node relationship = appendElement(relationships, "Relationship");
    setAttribute(relationship, "Id", id);
    setAttribute(relationship, "Type", fmt::format("{}/{}", kRelationshipsNamespace, type));
    setAttribute(relationship, "Target", target);
}

void addContentType(pugi::xml_node types, const char* part, std::string_view type) {
    const pugi::xml_node override = appendElement(types, "Override");
    setAttribute(override, "PartName", fmt::format("/{}", part));
    setAttribute(override, "ContentType", fmt::format("{}{}+xml", kContentTypeStart, type));
}

void addCellFormat(pugi::xml_node cellFormats) {
    const pugi::xml_node format = appendElement(cellFormats, "xf");
    for (const char* name : {"numFmtId", "fontId", "fillId", "borderId", "xfId"}) setAttribute(format, name, "0");
    setAttribute(format, "applyAlignment", "1");
    const pugi::xml_node alignment = appendElement(format, "alignment");
    setAttribute(alignment, "horizontal", "left");
    setAttribute(alignment, "vertical", "top");
    setAttribute(alignment, "wrapText", "1");
}

/// Removes the children of a name; the position of the last one when it went, 0 for none.
std::size_t removeChildrenNamed(pugi::xml_node parent, std::string_view name) {
    std::size_t last = 0;
    for (std::size_t position = 0; const pugi::xml_node child = PackagePart::child(parent, position);) {
        if (child.name() != name) {
            ++position;
            continue;
        }
        parent.remove_child(child);
        last = position;
    }
    return last;
}

void addNoPhonetics(pugi::xml_node parent) {
    const pugi::xml_node properties = appendElement(parent, "phoneticPr");
    setAttribute(properties, "fontId", "1");
    setAttribute(properties, "type", "noConversion");
}

void addSheetFormat(pugi::xml_node worksheet, const XlsxManner& manner) {
    const pugi::xml_node format = appendElement(worksheet, "sheetFormatPr");
    setAttribute(format, manner.baseColumnWidth, std::to_string(kColumnWidth));
    setAttribute(format, "defaultRowHeight", std::to_string(kRowHeight));
}

/// A row without cells spans the first column all the same; there is no smaller span.
std::string spansOf(std::size_t columnCount) {
    return fmt::format("1:{}", std::max<std::size_t>(columnCount, 1));
}

/// A row of several lines tells its height, for there are readers that do not find it on their own.
void addHeight(XmlStream& row, const std::vector<std::string>& texts) {
    std::size_t lines = 1;
    for (const std::string& text : texts) {
        lines = std::max(lines, wrappedLineCount(text, kLettersInColumn, kMostLines));
    }
    if (lines > 1) row.attribute("ht", std::to_string(kRowHeight + (lines - 1) * kFurtherLineHeight));
}

constexpr std::size_t kLetters = 26;

/// A to Z, AA to ZZ, AAA and so on.
std::string columnLetters(std::size_t column) {
    std::string letters;
    for (; column > 0; column = (column - 1) / kLetters) {
        letters.insert(letters.begin(), static_cast<char>('A' + (column - 1) % kLetters));
    }
    return letters;
}

/// The same up to ZZ, column 702. Behind it the first letter runs on into the characters after Z, as it always did.
std::string twoColumnLetters(std::size_t column) {
    const std::size_t rounds = (column - 1) / kLetters;
    if (rounds <= kLetters) return columnLetters(column);
    return toUtf8(std::u16string(1, static_cast<char16_t>('A' + rounds - 1))) +
           columnLetters((column - 1) % kLetters + 1);
}

std::string cellReference(std::size_t column, std::size_t row, const XlsxManner& manner) {
    return (manner.threeColumnLetters ? columnLetters(column) : twoColumnLetters(column)) + std::to_string(row);
}

/// A sheet without cells extends to its first one all the same; there is no smaller extent.
std::string extentUpTo(std::size_t column, std::size_t row, const XlsxManner& manner) {
    return "A1:" + (column == 0 || row == 0 ? kFirstCell : cellReference(column, row, manner));
}

void setExtent(pugi::xml_node dimension, const XlsxManner& manner, std::string_view extent) {
    setAttribute(dimension, "ref", manner.trueExtent ? extent : kClaimedDimension);
}

void setStringCount(pugi::xml_node sharedStrings, std::size_t count) {
    for (const char* name : {"count", "uniqueCount"}) setAttribute(sharedStrings, name, std::to_string(count));
}

}  // namespace

std::shared_ptr<WriteXlsxFile> WriteXlsxFile::init() {
    return std::shared_ptr<WriteXlsxFile>(new WriteXlsxFile);
}

WriteXlsxFile::WriteXlsxFile() = default;
WriteXlsxFile::~WriteXlsxFile() = default;

void WriteXlsxFile::writeXlsx(Rows rows) {
    rows_ = std::move(rows);
    allKeys_ = unionOfKeys(rows_);
    writeXlsxRelsFile();
    writeContentXml();
    writeXlsxFile();
}

void WriteXlsxFile::editPart(const char* name, const std::function<void(PackagePart& part)>& edit) {
    PackagePart part(partPath(name));
    if (!part.failure().empty()) return noteFailure(part.failure());
    edit(part);
    noteFailure(part.write(partPath(name)));
}

void WriteXlsxFile::writeXlsxRelsFile() {
    editPart("xl/_rels/workbook.xml.rels", [](PackagePart& part) {
        const pugi::xml_node relationships = part.first("Relationships");
        // With the placeholders counted, the number is above those of the entries that stay.
        const std::size_t count = childCount(relationships);
        removeChildren(relationships, kPlaceholders);
        addRelationship(relationships, "rId1", "worksheet", "worksheets/sheet1.xml");
        addRelationship(relationships, fmt::format("rId{}", count + 1), "sharedStrings", "sharedStrings.xml");
    });
    writeWorkbook();
    writeStyles();
}

void WriteXlsxFile::writeWorkbook() {
    editPart("xl/workbook.xml", [](PackagePart& part) {
        pugi::xml_node workbook = part.document().document_element();
        workbook.remove_child(PackagePart::child(workbook, kSheetsPosition));
        const pugi::xml_node sheet =
            appendElement(PackagePart::insertChild(workbook, kSheetsPosition, "sheets"), "sheet");
        setAttribute(sheet, "name", "Page 1");
        setAttribute(sheet, "sheetId", "1");
        setAttribute(sheet, "r:id", "rId1");
    });
}

void WriteXlsxFile::writeStyles() {
    editPart("xl/styles.xml", [](PackagePart& part) {
        constexpr const char* kCellFormats = "cellXfs";
        const pugi::xml_node styles = part.document().document_element();
        const pugi::xml_node formats =
            PackagePart::insertChild(styles, removeChildrenNamed(styles, kCellFormats), kCellFormats);
        setAttribute(formats, "count", "2");
        addCellFormat(formats);
        addCellFormat(formats);
    });
}

void WriteXlsxFile::writeContentXml() {
    editPart("[Content_Types].xml", [](PackagePart& part) {
        const pugi::xml_node types = part.first("Types");
        removeChildren(types, kPlaceholders);
        addContentType(types, kSheetPart, "worksheet");
        addContentType(types, kSharedStringsPart, "sharedStrings");
    });
}

void WriteXlsxFile::writeXlsxFile() {
    StreamedPart part(partPath(kSharedStringsPart));
    const pugi::xml_node strings = appendElement(part.document(), "sst");
    setAttribute(strings, "xmlns", kMainNamespace);
    setStringCount(strings, stringCount_ + lineCount() * allKeys_.size());
    removeTemplateSheets();
    if (xlsxManner(profile()).printerSettings) writeContentOfSheetRels(partPath(kSheetRelationshipsPart));
    writeContentOfsheet(partPath(kSheetPart), part.begin(strings));
    setStringCount(strings, stringCount_);  // fewer when stopped
    noteFailure(part.finish());
}

/// Rows of the sheet, the header among them.
std::size_t WriteXlsxFile::lineCount() const {
    return rows_.empty() ? 0 : rows_.size() + 1;
}

void WriteXlsxFile::removeTemplateSheets() const {
    for (int i = 1; i <= kTemplateSheets; ++i) {
        removeTree(partPath(fmt::format("xl/worksheets/_rels/sheet{}.xml.rels", i)));
        removeTree(partPath(fmt::format("xl/worksheets/sheet{}.xml", i)));
    }
}

void WriteXlsxFile::writeContentOfSheetRels(const std::string& path) {
    PackagePart part;
    const pugi::xml_node relationships = appendElement(part.document(), "Relationships");
    setAttribute(relationships, "xmlns", kPackageRelationshipsNamespace);
    addRelationship(relationships, "rId1", "printerSettings", "../slideLayouts/printerSettings1.bin");
    noteFailure(part.write(path));
}

void WriteXlsxFile::writeContentOfsheet(const std::string& path, XmlStream& sharedString) {
    StreamedPart part(path);
    const XlsxManner manner = xlsxManner(profile());
    const pugi::xml_node worksheet = appendElement(part.document(), "worksheet");
    setAttribute(worksheet, "xmlns", kMainNamespace);
    setAttribute(worksheet, "xmlns:r", kRelationshipsNamespace);
    const pugi::xml_node dimension = appendElement(worksheet, "dimension");
    setExtent(dimension, manner, extentUpTo(allKeys_.size(), lineCount(), manner));
    getSheetViews(worksheet);
    addSheetFormat(worksheet, manner);
    const pugi::xml_node sheetData = appendElement(worksheet, "sheetData");
    addNoPhonetics(worksheet);
    getpageMargins(worksheet);
    getpageSetup(worksheet);
    addAllRows(part.begin(sheetData), sharedString);
    setExtent(dimension, manner, "A1:" + lastCell_);  // smaller when stopped
    noteFailure(part.finish());
}

void WriteXlsxFile::getSheetViews(pugi::xml_node worksheet) const {
    const pugi::xml_node view = appendElement(appendElement(worksheet, "sheetViews"), "sheetView");
    setAttribute(view, "tabSelected", "1");
    setAttribute(view, "workbookViewId", "0");
}

void WriteXlsxFile::getpageMargins(pugi::xml_node worksheet) const {
    const pugi::xml_node margins = appendElement(worksheet, "pageMargins");
    for (const char* name : {"left", "right"}) setAttribute(margins, name, "0.7");
    for (const char* name : {"top", "bottom"}) setAttribute(margins, name, "0.75");
    for (const char* name : {"header", "footer"}) setAttribute(margins, name, "0.3");
}

void WriteXlsxFile::getpageSetup(pugi::xml_node worksheet) const {
    const pugi::xml_node setup = appendElement(worksheet, "pageSetup");
    setAttribute(setup, "paperSize", "0");
    setAttribute(setup, "orientation", "portrait");
    for (const char* name : {"horizontalDpi", "verticalDpi", "copies"}) setAttribute(setup, name, "0");
}

void WriteXlsxFile::addAllRows(XmlStream& sheetData, XmlStream& haredString) {
    const auto count = static_cast<std::int32_t>(rows_.size());
    if (count == 1) {
        getRowOne(sheetData, haredString, count);
    } else if (count > 1) {
        getRowNode(sheetData, haredString, count);
    }
}

void WriteXlsxFile::getRowOne(XmlStream& sheetData, XmlStream& haredString, std::int32_t dicCount) {
    // The names come first in the sheet of one row only: kept, as sheets of several rows are read by their columns.
    const Columns columns = withNamesFirst(getAllKey());
    addRows(sheetData, haredString, dicCount, columns, [&] { reorderTitle(sheetData, haredString, columns); });
}

void WriteXlsxFile::getRowNode(XmlStream& sheetData, XmlStream& haredString, std::int32_t dicCount) {
    addRows(sheetData, haredString, dicCount, columnKeys_, [&] { setHeadRow(sheetData, haredString); });
}

/// `columns` are looked at once the header is there.
void WriteXlsxFile::addRows(XmlStream& sheetData, XmlStream& haredString, std::int32_t dicCount, const Columns& columns,
                            const std::function<void()>& addHeader) {
    const std::size_t count = std::min(static_cast<std::size_t>(std::max(dicCount, 0)), rows_.size());
    for (std::size_t r = 0; r <= count && !isStop(); ++r) {
        sheetData.begin("row").attribute("r", std::to_string(r + 1));
        if (r == 0) {
            addHeader();
        } else {
            addDataCells(sheetData, haredString, r, columns);
        }
        sheetData.end();
        reportFraction(fractionOfRows(r, count));
    }
}

void WriteXlsxFile::setHeadRow(XmlStream& row, XmlStream& haredString) {
    std::ranges::move(getAllKey(), std::back_inserter(columnKeys_));
    reorderTitle(row, haredString, columnKeys_);
}

void WriteXlsxFile::reorderTitle(XmlStream& row, XmlStream& haredString, const Columns& reorderArr) {
    constexpr std::size_t kHeaderRow = 1;
    addCells(row, haredString, kHeaderRow, reorderArr);
}

/// Row `position` of the table, counted from 1, below the header.
void WriteXlsxFile::addDataCells(XmlStream& row, XmlStream& haredString, std::size_t position, const Columns& columns) {
    std::vector<std::string> texts;
    texts.reserve(columns.size());
    for (const std::string& key : columns) {
        const Value* value = rows_[position - 1].find(key);
        texts.push_back(value != nullptr ? stringValueFromObject(*value) : std::string());
    }
    addCells(row, haredString, position + 1, texts);
}

void WriteXlsxFile::addCells(XmlStream& row, XmlStream& haredString, std::size_t rowNumber,
                             const std::vector<std::string>& texts) {
    const XlsxManner manner = xlsxManner(profile());
    row.attribute("spans", manner.trueExtent ? spansOf(texts.size()) : kClaimedSpans);
    if (manner.heightFromText) addHeight(row, texts);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        // What XML cannot carry goes first, so that leaving it out makes no escape of the rest.
        addCell(row, haredString, cellReference(i + 1, rowNumber, manner),
                manner.escapedText ? escapedCellText(xmlText(texts[i])) : texts[i]);
    }
}

void WriteXlsxFile::addCell(XmlStream& row, XmlStream& haredString, std::string reference, std::string_view text) {
    haredString.begin("si").begin("t").attribute("xml:space", "preserve").text(text).end();
    haredString.begin("phoneticPr").attribute("fontId", "1").attribute("type", "noConversion").end().end();
    ++stringCount_;
    row.begin("c").attribute("r", reference).attribute("s", "1").attribute("t", "s");
    row.begin("v").text(std::to_string(nextString_)).end().end();
    ++nextString_;
    lastCell_ = std::move(reference);
}

WriteXlsxFile::Columns WriteXlsxFile::getAllKey() const {
    return allKeys_;
}

}  // namespace ZkMobileBackup
