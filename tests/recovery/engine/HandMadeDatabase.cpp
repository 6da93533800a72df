#include "tests/recovery/engine/HandMadeDatabase.h"

#include <algorithm>

namespace ZkMobileBackup::testing {

Field null() {
    return {0, {}};
}

Field number8(int value) {
    return {1, {static_cast<std::uint8_t>(value)}};
}

Field text(std::string_view content) {
    return {13 + 2 * content.size(), bytesOfText(content)};
}

Field blob(Bytes content) {
    return {12 + 2 * content.size(), std::move(content)};
}

Bytes varint(std::uint64_t value) {
    if (value < 0x80) return {static_cast<std::uint8_t>(value)};
    return {static_cast<std::uint8_t>(0x80 | value >> 7U), static_cast<std::uint8_t>(value & 0x7FU)};
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes bytesOfText(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes typesAndContent(const std::vector<Field>& fields) {
    Bytes types;
    Bytes content;
    for (const Field& field : fields) {
        types = joined({types, varint(field.type)});
        content = joined({content, field.content});
    }
    return joined({types, content});
}

Bytes record(const std::vector<Field>& fields) {
    std::size_t headerSize = 1;
    for (const Field& field : fields) headerSize += varint(field.type).size();
    return joined({varint(headerSize), typesAndContent(fields)});
}

Bytes cell(std::uint64_t rowid, const std::vector<Field>& fields) {
    const Bytes payload = record(fields);
    return joined({varint(payload.size()), varint(rowid), payload});
}

HandMadeDatabase::HandMadeDatabase(std::uint16_t pageSize, std::uint32_t pageCount)
    : image(std::size_t{pageSize} * pageCount), pageSize_(pageSize) {
    put(0, bytesOfText("SQLite format 3"));
    put16(16, pageSize);
    put32(28, pageCount);
}

std::uint16_t HandMadeDatabase::leaf(std::uint32_t page, const std::vector<Bytes>& cells) {
    const std::size_t header = start(page) + headerOffset(page);
    put8(header, 13);
    put16(header + 3, static_cast<unsigned>(cells.size()));
    std::size_t offset = pageSize_;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        offset -= cells[i].size();
        putInPage(page, offset, cells[i]);
        put16(header + 8 + 2 * i, static_cast<unsigned>(offset));
    }
    return static_cast<std::uint16_t>(offset);
}

void HandMadeDatabase::interior(std::uint32_t page, const std::vector<std::uint32_t>& children,
                                std::uint32_t rightmost) {
    const std::size_t header = start(page) + headerOffset(page);
    put8(header, 5);
    put16(header + 3, static_cast<unsigned>(children.size()));
    put32(header + 8, rightmost);
    std::size_t offset = pageSize_;
    for (std::size_t i = 0; i < children.size(); ++i) {
        offset -= 5;
        put32(start(page) + offset, children[i]);
        put8(start(page) + offset + 4, static_cast<unsigned>(i + 1));
        put16(header + 12 + 2 * i, static_cast<unsigned>(offset));
    }
}

void HandMadeDatabase::schema(const std::vector<SchemaEntry>& entries) {
    std::vector<Bytes> cells;
    for (const SchemaEntry& entry : entries) {
        cells.push_back(cell(cells.size() + 1, {text(entry.type), text(entry.name), text(entry.name),
                                                number8(entry.rootPage), text(entry.sql)}));
    }
    leaf(1, cells);
}

void HandMadeDatabase::freelist(std::uint32_t firstTrunk, std::uint32_t count) {
    put32(32, firstTrunk);
    put32(36, count);
}

void HandMadeDatabase::trunk(std::uint32_t page, std::uint32_t next, const std::vector<std::uint32_t>& leaves) {
    put32(start(page), next);
    put32(start(page) + 4, static_cast<std::uint32_t>(leaves.size()));
    for (std::size_t i = 0; i < leaves.size(); ++i) put32(start(page) + 8 + 4 * i, leaves[i]);
}

void HandMadeDatabase::put16(std::size_t position, unsigned value) {
    put8(position, value >> 8U);
    put8(position + 1, value & 0xFFU);
}

void HandMadeDatabase::put32(std::size_t position, std::uint32_t value) {
    put16(position, value >> 16U);
    put16(position + 2, value & 0xFFFFU);
}

void HandMadeDatabase::put(std::size_t position, const Bytes& bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) image.at(position + i) = bytes[i];
}

std::shared_ptr<DlxSQLiteParser> HandMadeDatabase::parsed() const {
    return parsedCopy(image);
}

std::shared_ptr<DlxSQLiteParser> parsedCopy(const Bytes& image) {
    auto parser = DlxSQLiteParser::initWithDBData(image);
    parser->parser();
    return parser;
}

std::vector<Texts> rowsOf(const RowList& list) {
    std::vector<Texts> rows;
    for (const Row& row : list) rows.push_back(row.texts());
    return rows;
}

std::vector<Texts> liveRows(const DlxSQLiteParser& parser, std::size_t table) {
    return rowsOf(parser.tableList().at(table)->rowList());
}

std::vector<Texts> deletedRows(const DlxSQLiteParser& parser, std::size_t table) {
    return rowsOf(parser.tableList().at(table)->deletedRowList());
}

}  // namespace ZkMobileBackup::testing
