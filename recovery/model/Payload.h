#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Api.h"

namespace ZkMobileBackup {

/// One cell of a record that is being decoded.
class ZKMB_API PayloadCell {
public:
    /// Values of `type` that stand for a whole family of stored serial types.
    static constexpr std::int32_t kBlob = 12;
    static constexpr std::int32_t kText = 13;

    PayloadCell() = default;
    PayloadCell(std::int32_t type, std::int32_t offset, std::int32_t size)
        : type_(type), offset_(offset), size_(size) {}

    /// The stored serial type; kBlob for every blob, kText for every text.
    std::int32_t type() const { return type_; }
    void setType(std::int32_t type) { type_ = type; }
    /// Position of the content, counted from the record's base.
    std::int32_t offset() const { return offset_; }
    void setOffset(std::int32_t offset) { offset_ = offset; }
    /// Length of the content in bytes.
    std::int32_t size() const { return size_; }
    void setSize(std::int32_t size) { size_ = size; }

private:
    std::int32_t type_ = -1;
    std::int32_t offset_ = -1;
    std::int32_t size_ = 0;
};

/// One record while it is decoded. Positions are positions in the image, empty while unknown.
class ZKMB_API PayloadObject {
public:
    using Position = std::optional<std::int64_t>;

    PayloadObject() = default;
    PayloadObject(const PayloadObject&) = delete;
    PayloadObject& operator=(const PayloadObject&) = delete;

    /// Bytes of a live cell's payload-length and rowid numbers.
    std::uint64_t prefixLen() const { return prefixLen_; }
    void setPrefixLen(std::uint64_t length) { prefixLen_ = length; }
    /// Payload length: as stored for a live cell, the forced one for a carved record.
    std::uint64_t length() const { return length_; }
    void setLength(std::uint64_t length) { length_ = length; }
    std::uint64_t rowid() const { return rowid_; }
    void setRowid(std::uint64_t rowid) { rowid_ = rowid; }
    std::uint64_t headerSize() const { return headerSize_; }
    void setHeaderSize(std::uint64_t size) { headerSize_ = size; }
    /// Cells decoded from the header. Cells of an invalid type are in the list but not counted.
    std::int32_t cellCount() const { return cellCount_; }
    void setCellCount(std::int32_t count) { cellCount_ = count; }
    std::int32_t cellPageOffset() const { return cellPageOffset_; }
    void setCellPageOffset(std::int32_t offset) { cellPageOffset_ = offset; }
    std::int32_t cellPage() const { return cellPage_; }
    void setCellPage(std::int32_t page) { cellPage_ = page; }
    /// The cells in header order.
    std::vector<PayloadCell>& cellList() { return cellList_; }
    const std::vector<PayloadCell>& cellList() const { return cellList_; }
    /// Overflow pages of the record in chain order.
    std::vector<std::uint32_t>& overFlowPageList() { return overFlowPageList_; }
    const std::vector<std::uint32_t>& overFlowPageList() const { return overFlowPageList_; }
    /// First byte of the record: the payload length of a live cell, the first serial type of a carved record.
    Position base() const { return base_; }
    void setBase(Position position) { base_ = position; }
    /// From where cell offsets are counted when values are read.
    Position mappedData() const { return mappedData_; }
    void setMappedData(Position position) { mappedData_ = position; }
    /// End of the readable, spliced content.
    Position mappedDataEndpoint() const { return mappedDataEndpoint_; }
    void setMappedDataEndpoint(Position position) { mappedDataEndpoint_ = position; }
    /// Whether the first column's value is the rowid.
    bool ignoreFirstFiled() const { return ignoreFirstFiled_; }
    void setIgnoreFirstFiled(bool flag) { ignoreFirstFiled_ = flag; }

    // ---- Additions of this library ----

    /// Back to a new object's state, keeping the lists' memory.
    void reset();

private:
    std::uint64_t prefixLen_ = 0;
    std::uint64_t length_ = 0;
    std::uint64_t rowid_ = ~std::uint64_t{0};
    std::uint64_t headerSize_ = 0;
    std::int32_t cellCount_ = 0;
    std::int32_t cellPageOffset_ = -1;
    std::int32_t cellPage_ = -1;
    std::vector<PayloadCell> cellList_;
    std::vector<std::uint32_t> overFlowPageList_;
    Position base_;
    Position mappedData_;
    Position mappedDataEndpoint_;
    bool ignoreFirstFiled_ = false;
};

}  // namespace ZkMobileBackup
