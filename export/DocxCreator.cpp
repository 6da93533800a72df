#include "export/DocxCreator.h"

#include <algorithm>
#include <fmt/format.h>
#include <pugixml.hpp>
#include <string_view>
#include <utility>

#include "export/PackageFormat.h"
#include "export/PackagePart.h"
#include "export/TableInsert.h"
#include "export/column_keys.h"
#include "export/docx_profile.h"
#include "export/progress.h"
#include "platform/Xml.h"
#include "platform/XmlStream.h"

namespace ZkMobileBackup {

namespace {

constexpr const char* kDocumentPart = "word/document.xml";
constexpr const char* kContentTypesPart = "[Content_Types].xml";

/// More columns than these do not fit on the page; the keys behind them are not written.
constexpr std::size_t kMostColumns = 28;

/// Marks of an editing session, which readers expect in documents and do not compare.
constexpr const char* kParagraphMark = "005A76FB";
constexpr const char* kRowMark = "00AD10A2";
constexpr const char* kRowFormatMark = "00CB73A4";

/// A line of 12 points, in twentieths of a point.
constexpr const char* kSpacerLine = "240";

/// Adds a type for files with an extension behind the first of the existing ones.
void addContentType(pugi::xml_node types, const char* extension, const char* contentType) {
    const pugi::xml_node added = PackagePart::insertChild(types, 1, "Default");
    setAttribute(added, "Extension", extension);
    setAttribute(added, "ContentType", contentType);
}

/// Gives the paragraph in hand its marks.
void addParagraphMarks(XmlStream& paragraph) {
    for (const char* name : {"w:rsidR", "w:rsidRDefault", "w:rsidP"}) paragraph.attribute(name, kParagraphMark);
}

void addWidth(XmlStream& parent, std::string_view name, std::string_view width) {
    parent.begin(name).attribute("w:w", width).attribute("w:type", "dxa").end();
}

void addCellMargins(XmlStream& properties) {
    properties.begin("w:tcMar");
    addWidth(properties, "w:left", "0");
    addWidth(properties, "w:right", "0");
    properties.end();
}

}  // namespace

std::shared_ptr<DocxCreator> DocxCreator::initWithDictionary(Rows rows, std::string savePath) {
    return std::shared_ptr<DocxCreator>(new DocxCreator(std::move(rows), std::move(savePath)));
}

DocxCreator::DocxCreator(Rows rows, std::string savePath)
    : PackagedCreator(kDocxPackage, std::move(rows), std::move(savePath)),
      table_(TableInsert::init()),
      scratch_(std::make_unique<pugi::xml_document>()) {}

DocxCreator::~DocxCreator() = default;

void DocxCreator::prepareStage() {
    initDocxFile();
}

void DocxCreator::writeParts() {
    writeWordFiles();
}

void DocxCreator::initDocxFile() {
    if (!layTemplate()) return;
    emptyBody();
    insertContentXmlOfImage();
}

void DocxCreator::emptyBody() {
    const PackagePart part(stagePath(kDocumentPart));
    pugi::xml_node body = elementOf(part, "w:body");
    if (!body) return;
    body.remove_children();
    noteFailure(part.write(stagePath(kDocumentPart)));
}

/// The first element of that name; null, which is noted as a failure, where the part could not be read or has none.
pugi::xml_node DocxCreator::elementOf(const PackagePart& part, const char* name) {
    const pugi::xml_node element = part.first(name);
    if (element) return element;
    noteFailure(part.failure().empty() ? fmt::format("The template lacks the element '{}'.", name) : part.failure());
    return {};
}

void DocxCreator::insertContentXmlOfImage() {
    const PackagePart part(stagePath(kContentTypesPart));
    const pugi::xml_node types = elementOf(part, "Types");
    if (!types) return;
    addContentType(types, "jpeg", "image/jpeg");
    addContentType(types, "png", "image/png");
    noteFailure(part.write(stagePath(kContentTypesPart)));
}

void DocxCreator::writeWordFiles() {
    const PackagePart part(stagePath(kDocumentPart));
    pugi::xml_node body = elementOf(part, "w:body");
    if (!body) return;
    body.append_copy(writeReturn(kSpacerLine));
    const pugi::xml_node placeOfTable = appendElement(body, "table");
    if (docxManner(profile()).paragraphAfterTable) body.append_copy(writeReturn(kSpacerLine));
    body.append_copy(writeEndSectPrNode());
    noteFailure(
        part.write(stagePath(kDocumentPart), placeOfTable, [this](XmlStream& parent) { setTableNode(parent); }));
}

pugi::xml_node DocxCreator::writeReturn(const std::string& lineSpacing) {
    const pugi::xml_node paragraph = appendElement(*scratch_, "w:p");
    for (const char* name : {"w:rsidR", "w:rsidRDefault", "w:rsidP"}) setAttribute(paragraph, name, kParagraphMark);
    const pugi::xml_node spacing = appendElement(appendElement(paragraph, "w:pPr"), "w:spacing");
    setAttribute(spacing, "w:before", "0");
    setAttribute(spacing, "w:after", "0");
    setAttribute(spacing, "w:line", lineSpacing);
    setAttribute(spacing, "w:lineRule", "exact");
    return paragraph;
}

void DocxCreator::setTableNode(XmlStream& body) {
    const bool hasCells = !std::ranges::all_of(DictionArr(), &Dictionary::empty);
    if (DictionArr().empty() || (!hasCells && !docxManner(profile()).tableWithoutColumns)) return;
    body.begin("w:tbl");
    SetTable(body, static_cast<std::int32_t>(DictionArr().size()));
    body.end();
}

void DocxCreator::SetTable(XmlStream& table, std::int32_t dicCount) {
    const std::size_t count = std::min(static_cast<std::size_t>(std::max(dicCount, 0)), DictionArr().size());
    table.tree(table_->getTblprNode(profile())).tree(table_->getWtblGridNode(gridColumnCount(), profile()));
    for (std::size_t r = 0; r <= count && !isStop(); ++r) {
        table.begin("w:tr").attribute("w:rsidR", kRowMark).attribute("w:rsidTr", kRowFormatMark);
        if (r == 0) {
            table.begin("w:trPr").begin("w:trHeight").attribute("w:hRule", "exact").attribute("w:val", "700");
            table.end().end();
            setHeadNode(table);
        } else {
            addDataRow(table, DictionArr()[r - 1]);
        }
        table.end();
        reportFraction(fractionOfRows(r, count));
    }
}

std::int32_t DocxCreator::gridColumnCount() const {
    const bool widest = docxManner(profile()).gridOfWidestTable;
    return static_cast<std::int32_t>(widest ? kMostColumns : std::min(getAllKey().size(), kMostColumns));
}

std::size_t DocxCreator::columnCount() const {
    return std::min(columnKeys_.size(), kMostColumns);
}

// Columns stand in the reverse order of the keys, here and in the rows of data: readers know the documents that way.
void DocxCreator::setHeadNode(XmlStream& row) {
    columnKeys_ = getAllKey();
    for (std::size_t column = columnCount(); column-- > 0;) addCell(row, columnKeys_[column]);
}

void DocxCreator::addDataRow(XmlStream& row, const Dictionary& cells) const {
    for (std::size_t column = columnCount(); column-- > 0;) {
        const Value* value = cells.find(columnKeys_[column]);
        addCell(row, value != nullptr ? stringValueFromObject(*value) : std::string());
    }
}

void DocxCreator::addCell(XmlStream& row, std::string_view text) const {
    getWtcNode(row);
    row.begin("w:p");
    addParagraphMarks(row);
    row.begin("w:r").begin("w:t").attribute("xml:space", "preserve").text(text);
    row.end().end().end().end();
}

void DocxCreator::getWtcNode(XmlStream& row) const {
    const DocxManner manner = docxManner(profile());
    row.begin("w:tc").begin("w:tcPr");
    addWidth(row, "w:tcW", kDocxCellWidth);
    if (manner.marginsBeforeBorders) addCellMargins(row);
    getWtcBorder(row);
    row.begin("w:shd").attribute("w:val", "clear").attribute("w:color", "auto").attribute("w:fill", "auto").end();
    if (!manner.marginsBeforeBorders) addCellMargins(row);
    row.begin("w:vAlign").attribute("w:val", "center").end();
    row.end();
}

void DocxCreator::getWtcBorder(XmlStream& properties) const {
    properties.begin("w:tcBorders");
    for (const char* side : {"w:top", "w:left", "w:bottom", "w:right"}) {
        properties.begin(side).attribute("w:val", "single").attribute("w:sz", "12");
        properties.attribute("w:space", "0").attribute("w:color", "000000").end();
    }
    properties.end();
}

pugi::xml_node DocxCreator::writeEndSectPrNode() {
    struct Property {
        const char* element;
        std::vector<std::pair<const char*, const char*>> attributes;
    };
    const pugi::xml_node section = appendElement(*scratch_, "w:sectPr");
    setAttribute(section, "w:rsidR", kParagraphMark);
    setAttribute(section, "w:rsidSect", kParagraphMark);
    const auto add = [](pugi::xml_node parent, const Property& property) {
        const pugi::xml_node element = appendElement(parent, property.element);
        for (const auto& [name, value] : property.attributes) setAttribute(element, name, value);
        return element;
    };
    add(section, {"w:pgSz", {{"w:w", "31906"}, {"w:h", "26838"}}});  // 28 columns wide
    add(section, {"w:pgMar",
                  {{"w:top", "0"},
                   {"w:right", "0"},
                   {"w:bottom", "0"},
                   {"w:left", "0"},
                   {"w:header", "851"},
                   {"w:footer", "992"},
                   {"w:gutter", "0"}}});
    const pugi::xml_node columns = add(section, {"w:cols", {{"w:num", "1"}, {"w:equalWidth", "0"}}});
    add(columns, {"w:col", {{"w:w", "11900"}, {"w:space", "0"}}});
    add(section, {"w:docGrid", {{"w:type", "lines"}, {"w:linePitch", "312"}}});
    return section;
}

std::vector<std::string> DocxCreator::getAllKey() const {
    return unionOfKeys(DictionArr());
}

}  // namespace ZkMobileBackup
