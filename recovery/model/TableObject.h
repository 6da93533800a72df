#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Api.h"
#include "recovery/model/Row.h"

namespace ZkMobileBackup {

/// Class of a column's declared type, and the default value that its definition carries.
struct ColumnType {
    std::int64_t code = 0;                   ///< one of ColumnClass
    std::optional<std::string> defaultText;  ///< as it stands in the schema, quotes included; empty without DEFAULT
    bool operator==(const ColumnType&) const = default;
};

/// Codes of the declared type words that the carver tells apart.
enum ColumnClass : std::int64_t {
    kColumnUnknown = 0,
    kColumnFloat = 1,
    kColumnText = 2,
    kColumnBlob = 4,
    kColumnInteger = 8,
};

/// One table: its columns, its live rows and the rows of its deleted records.
/// "filed" stands for field throughout these names.
class ZKMB_API TableObject {
public:
    TableObject();
    explicit TableObject(std::shared_ptr<RowStore> store);
    virtual ~TableObject();
    TableObject(const TableObject&) = delete;
    TableObject& operator=(const TableObject&) = delete;

    // copyWithZone: a plain TableObject with a copy of every column and row, also of an object of a derived class.
    std::shared_ptr<TableObject> copyWithZone() const;

    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> name) { name_ = std::move(name); }
    /// Column names in declaration order.
    std::vector<std::string>& filedList() { return filedList_; }
    const std::vector<std::string>& filedList() const { return filedList_; }
    void setFiledList(std::vector<std::string> list) { filedList_ = std::move(list); }
    /// Number of columns as counted while the schema was read.
    std::int64_t filedCount() const { return filedCount_; }
    void setFiledCount(std::int64_t count) { filedCount_ = count; }
    /// One entry a column, in the order of filedList.
    std::vector<ColumnType>& filedTypeList() { return filedTypeList_; }
    const std::vector<ColumnType>& filedTypeList() const { return filedTypeList_; }
    void setFiledTypeList(std::vector<ColumnType> list) { filedTypeList_ = std::move(list); }
    /// Live rows in the order in which they were met.
    RowList& rowList() { return rowList_; }
    const RowList& rowList() const { return rowList_; }
    void setRowList(RowList list) { rowList_ = std::move(list); }
    /// Rows of deleted records in the order in which they were found.
    RowList& deletedRowList() { return deletedRowList_; }
    const RowList& deletedRowList() const { return deletedRowList_; }
    void setDeletedRowList(RowList list) { deletedRowList_ = std::move(list); }

private:
    std::optional<std::string> name_;
    std::vector<std::string> filedList_;
    std::int64_t filedCount_ = 0;
    std::vector<ColumnType> filedTypeList_;
    RowList rowList_;
    RowList deletedRowList_;
};

/// A table as the database file holds it.
class ZKMB_API RawTableObject : public TableObject {
public:
    /// Values of tableType.
    enum TableType : std::int64_t { kSchemaTable = 0, kOrdinaryTable = 1, kFreePageTable = 2 };

    RawTableObject();
    explicit RawTableObject(std::shared_ptr<RowStore> store);
    ~RawTableObject() override;

    std::int64_t tableType() const { return tableType_; }
    void setTableType(std::int64_t type) { tableType_ = type; }
    /// Root page, counted from 1; 0 for the schema table; for a free page its own number.
    std::int64_t pageNum() const { return pageNum_; }
    void setPageNum(std::int64_t number) { pageNum_ = number; }
    /// Whether the first column is stored as the rowid ("Interger" stands for Integer).
    bool hasIntergerPK() const { return hasIntergerPK_; }
    void setHasIntergerPK(bool flag) { hasIntergerPK_ = flag; }

    std::string description() const;

private:
    std::int64_t tableType_ = kOrdinaryTable;
    std::int64_t pageNum_ = -1;
    bool hasIntergerPK_ = false;
};

/// A result table: its rows are dictionaries.
class ZKMB_API CustomTableObject : public TableObject {
public:
    CustomTableObject();
    ~CustomTableObject() override;
};

}  // namespace ZkMobileBackup
