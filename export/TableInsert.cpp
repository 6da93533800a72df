#include "export/TableInsert.h"

#include <pugixml.hpp>

#include "export/docx_profile.h"
#include "platform/Xml.h"

namespace ZkMobileBackup {

namespace {

constexpr const char* kTableStyle = "a6";

/// Twentieths of a point; also the distance from text and from the corner of the page.
constexpr const char* kDistance = "180";

/// Far below the width of a cell; in twentieths of a point.
constexpr const char* kNarrowColumn = "200";

void addFloating(pugi::xml_node properties, const DocxManner& manner) {
    const pugi::xml_node floating = appendElement(properties, "w:tblpPr");
    setAttribute(manner.leftFromTextOnProperties ? properties : floating, "w:leftFromText", kDistance);
    setAttribute(floating, "w:rightFromText", kDistance);
    setAttribute(floating, "w:vertAnchor", "page");
    setAttribute(floating, "w:horzAnchor", "page");
    setAttribute(floating, "w:tblpX", kDistance);
    setAttribute(floating, "w:tblpY", kDistance);
}

void addLayout(pugi::xml_node properties) {
    setAttribute(appendElement(properties, "w:tblLayout"), "w:type", "fixed");
}

void addBorders(pugi::xml_node properties) {
    const pugi::xml_node borders = appendElement(properties, "w:tblBorders");
    for (const char* side : {"w:top", "w:left", "w:bottom", "w:right", "w:insideH", "w:insideV"}) {
        const pugi::xml_node border = appendElement(borders, side);
        setAttribute(border, "w:val", "none");
        setAttribute(border, "w:sz", "0");
        setAttribute(border, "w:space", "0");
        setAttribute(border, "w:color", "auto");
    }
}

}  // namespace

std::shared_ptr<TableInsert> TableInsert::init() {
    return std::shared_ptr<TableInsert>(new TableInsert);
}

TableInsert::TableInsert() : document_(std::make_unique<pugi::xml_document>()) {}
TableInsert::~TableInsert() = default;

pugi::xml_node TableInsert::getTblprNode(Profile profile) {
    const DocxManner manner = docxManner(profile);
    const pugi::xml_node properties = appendElement(*document_, "w:tblPr");
    setAttribute(appendElement(properties, "w:tblStyle"), "w:val", kTableStyle);
    addFloating(properties, manner);
    const pugi::xml_node width = appendElement(properties, "w:tblW");
    setAttribute(width, "w:w", manner.tableWidth.value);
    setAttribute(width, "w:type", manner.tableWidth.type);
    if (manner.layoutBeforeBorders) addLayout(properties);
    addBorders(properties);
    if (!manner.layoutBeforeBorders) addLayout(properties);
    setAttribute(appendElement(properties, "w:tblLook"), "w:val", "0000");
    return properties;
}

pugi::xml_node TableInsert::getWtblGridNode(std::int32_t columnCount, Profile profile) {
    const char* width = docxManner(profile).gridOfWidestTable ? kNarrowColumn : kDocxCellWidth;
    const pugi::xml_node grid = appendElement(*document_, "w:tblGrid");
    for (std::int32_t column = 0; column < columnCount; ++column) {
        setAttribute(appendElement(grid, "w:gridCol"), "w:w", width);
    }
    return grid;
}

}  // namespace ZkMobileBackup
