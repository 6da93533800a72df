#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "recovery/DlxSQLiteParser.h"

namespace ZkMobileBackup::testing {

using Bytes = std::vector<std::uint8_t>;
using Texts = std::vector<std::string>;

/// A value as a record stores it: its serial type and its content.
struct Field {
    std::uint64_t type = 0;
    Bytes content;
};
Field null();
Field number8(int value);
Field text(std::string_view content);
Field blob(Bytes content);

/// A number of at most 16383 as it is stored, in one or two bytes.
Bytes varint(std::uint64_t value);
Bytes joined(std::initializer_list<Bytes> parts);
Bytes bytesOfText(std::string_view text);

/// The serial types of a record and its content: what a deletion leaves of it.
Bytes typesAndContent(const std::vector<Field>& fields);
/// The same with the header's size before it: the payload of a cell.
Bytes record(const std::vector<Field>& fields);
/// A live cell: payload length, rowid, record.
Bytes cell(std::uint64_t rowid, const std::vector<Field>& fields);

struct SchemaEntry {
    std::string name;
    int rootPage = 0;
    std::string sql;
    std::string type = "table";
};

/// A database file put together by hand, so that every byte is known. Pages are counted from 1, and all of them are
/// zeros at first.
class HandMadeDatabase {
public:
    HandMadeDatabase(std::uint16_t pageSize, std::uint32_t pageCount);

    std::size_t start(std::uint32_t page) const { return std::size_t{pageSize_} * (page - 1); }
    std::size_t end(std::uint32_t page) const { return start(page) + pageSize_; }

    /// A leaf page whose cells stand one before the other from the page's end on, as SQLite puts them; cell i has
    /// pointer i. Returns the offset of the last cell.
    std::uint16_t leaf(std::uint32_t page, const std::vector<Bytes>& cells);
    /// An interior page; its cells hold a child each.
    void interior(std::uint32_t page, const std::vector<std::uint32_t>& children, std::uint32_t rightmost);
    /// Page 1 as a leaf page of the schema.
    void schema(const std::vector<SchemaEntry>& entries);
    /// The freelist fields of the file's header.
    void freelist(std::uint32_t firstTrunk, std::uint32_t count);
    void trunk(std::uint32_t page, std::uint32_t next, const std::vector<std::uint32_t>& leaves);

    void put8(std::size_t position, unsigned value) { image[position] = static_cast<std::uint8_t>(value); }
    void put16(std::size_t position, unsigned value);
    void put32(std::size_t position, std::uint32_t value);
    void put(std::size_t position, const Bytes& bytes);
    /// Puts bytes at an offset of a page.
    void putInPage(std::uint32_t page, std::size_t offset, const Bytes& bytes) { put(start(page) + offset, bytes); }

    /// A parser over a copy of the image as it stands.
    std::shared_ptr<DlxSQLiteParser> parser() const { return DlxSQLiteParser::initWithDBData(image); }
    /// The same after its run.
    std::shared_ptr<DlxSQLiteParser> parsed() const;

    Bytes image;

private:
    /// Where a page's B-tree header begins, counted from the page's start.
    static std::size_t headerOffset(std::uint32_t page) { return page == 1 ? 100 : 0; }

    std::uint16_t pageSize_;
};

/// A parser over a copy of these bytes, after its run.
std::shared_ptr<DlxSQLiteParser> parsedCopy(const Bytes& image);

/// The rows as texts.
std::vector<Texts> rowsOf(const RowList& list);
std::vector<Texts> liveRows(const DlxSQLiteParser& parser, std::size_t table);
std::vector<Texts> deletedRows(const DlxSQLiteParser& parser, std::size_t table);

}  // namespace ZkMobileBackup::testing
