#pragma once

#include <cstdint>
#include <memory>

#include "base/Api.h"
#include "base/Profile.h"

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

namespace ZkMobileBackup {

/// Makes the elements at the head of a table in a DOCX document, which are the same whatever the table holds. Not for
/// use by several threads at once.
class ZKMB_API TableInsert {
public:
    // init
    static std::shared_ptr<TableInsert> init();
    ~TableInsert();
    TableInsert(const TableInsert&) = delete;
    TableInsert& operator=(const TableInsert&) = delete;

    // Each makes a new element, to be copied from here, which lives as long as the object. The profile is an addition
    // of ours.
    // getTblprNode
    /// A "w:tblPr" element.
    pugi::xml_node getTblprNode(Profile profile = Profile::kLegacy);
    // getWtblGridNode:
    /// A "w:tblGrid" element with `columnCount` columns, none below 1.
    pugi::xml_node getWtblGridNode(std::int32_t columnCount, Profile profile = Profile::kLegacy);

protected:
    TableInsert();

private:
    std::unique_ptr<pugi::xml_document> document_;  // owns the elements
};

}  // namespace ZkMobileBackup
