#include "export/HtmlCreator.h"

#include <algorithm>
#include <pugixml.hpp>
#include <string_view>
#include <utility>

#include "base/Text.h"
#include "export/progress.h"
#include "platform/Xml.h"

namespace ZkMobileBackup {

namespace {

constexpr const char* kXhtmlNamespace = "http://www.w3.org/1999/xhtml";
constexpr const char* kDocumentType =
    "html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
    "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\"";
constexpr const char* kHeaderStyle =
    "background-color:#6699cc;color:#ffffff;font-size:13px;text-align:left;padding:3px 5px 3px 5px;";
constexpr const char* kCellStyle = "background-color:#ffffff;font-size:12px;padding:3px 5px 3px 5px;";

}  // namespace

std::shared_ptr<HtmlCreator> HtmlCreator::initWithDictionary(Rows rows, std::string savePath) {
    return std::shared_ptr<HtmlCreator>(new HtmlCreator(std::move(rows), std::move(savePath)));
}

HtmlCreator::HtmlCreator(Rows rows, std::string savePath)
    : rows_(std::move(rows)), savePath_(std::move(savePath)), document_(std::make_unique<pugi::xml_document>()) {}

HtmlCreator::~HtmlCreator() = default;

void HtmlCreator::startConvert() {
    writeHtml();
}

void HtmlCreator::writeHtml() {
    pugi::xml_node body = beginDocument();
    reportFraction(kSkeletonDone);
    if (const pugi::xml_node table = getTableNode()) body.append_move(table);
    if (isStop()) return extportComplete(false);
    writeDocument(savePath_, DlxExportType::kHtml, prettyPrinted(*document_));
    reportFraction(kFileDone);
}

/// Everything but the table; returns the body element.
pugi::xml_node HtmlCreator::beginDocument() {
    pugi::xml_node declaration = document_->append_child(pugi::node_declaration);
    setAttribute(declaration, "version", "1.0");
    setAttribute(declaration, "encoding", "utf-8");
    document_->append_child(pugi::node_doctype).set_value(kDocumentType);
    const pugi::xml_node html = appendElement(*document_, "html");
    setAttribute(html, "xmlns", kXhtmlNamespace);
    headNode(appendElement(html, "head"));
    const pugi::xml_node body = appendElement(html, "body");
    setAttribute(body, "bgcolor", "#FFFFFF");
    return body;
}

void HtmlCreator::headNode(pugi::xml_node head) const {
    const pugi::xml_node meta = appendElement(head, "meta");
    setAttribute(meta, "http-equiv", "Content-Type");
    setAttribute(meta, "content", "text/html");
    setAttribute(meta, "charset", "utf-8");
    appendTextElement(head, "title", pathWithoutExtension(lastPathComponent(savePath_)));
}

pugi::xml_node HtmlCreator::getTableNode() {
    if (rows_.empty()) return {};
    const pugi::xml_node table = appendElement(*document_, "table");
    setAttribute(table, "cellspacing", "0");
    setAttribute(table, "border", "1");
    SetTable(table, static_cast<std::int32_t>(rows_.size()));
    return table;
}

void HtmlCreator::SetTable(pugi::xml_node table, std::int32_t dicCount) {
    const std::size_t count = std::min(static_cast<std::size_t>(std::max(dicCount, 0)), rows_.size());
    for (std::size_t r = 0; r <= count && !isStop(); ++r) {
        const pugi::xml_node row = appendElement(table, "tr");
        if (r == 0) {
            setThNode(row);
        } else {
            addDataRow(row, rows_[r - 1]);
        }
        reportFraction(fractionOfRows(r, count));
    }
}

// Columns stand in the reverse order of the keys, here and in the rows of data: readers know the pages that way.
void HtmlCreator::setThNode(pugi::xml_node row) {
    for (std::string& key : getAllKey()) {
        columnClasses_.push_back(lowerCased(key));
        columnKeys_.push_back(std::move(key));
    }
    for (std::size_t column = columnKeys_.size(); column-- > 0;) {
        const pugi::xml_node cell = appendTextElement(row, "th", columnKeys_[column]);
        setAttribute(cell, "class", columnClasses_[column]);
        setAttribute(cell, "style", kHeaderStyle);
    }
}

void HtmlCreator::addDataRow(pugi::xml_node row, const Dictionary& cells) const {
    for (std::size_t column = columnKeys_.size(); column-- > 0;) {
        const Value* value = cells.find(columnKeys_[column]);
        const pugi::xml_node cell =
            appendTextElement(row, "td", value != nullptr ? stringValueFromObject(*value) : std::string());
        setAttribute(cell, "style", kCellStyle);
        setAttribute(cell, "class", columnClasses_[column]);
    }
}

/// Only the first row decides about columns; keys that later rows add are never written.
std::vector<std::string> HtmlCreator::getAllKey() const {
    std::vector<std::string> keys;
    if (rows_.empty()) return keys;
    for (std::size_t i = 0; i < rows_[0].size(); ++i) keys.push_back(rows_[0].keyAt(i));
    return keys;
}

}  // namespace ZkMobileBackup
