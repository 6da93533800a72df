#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "recovery/DlxSQLiteParser.h"
#include "tests/recovery/engine/HandMadeDatabase.h"

namespace ZkMobileBackup::testing {

/// A parser whose cursor stands at an offset of a page, as it does while the page is walked.
inline std::shared_ptr<DlxSQLiteParser> parserAt(const HandMadeDatabase& database, std::uint32_t page,
                                                 std::int64_t offset) {
    auto parser = database.parser();
    const auto start = static_cast<std::int64_t>(database.start(page));
    parser->sqliteReader()->setDbCurPageOffset(start);
    parser->sqliteReader()->setDbCurPageLimit(static_cast<std::int64_t>(database.end(page)));
    parser->sqliteReader()->setDbCurOffset(start + offset);
    return parser;
}

/// Where the record under test stands: at this offset of the second of four pages.
inline constexpr std::uint16_t kRecordPageSize = 512;
inline constexpr std::int64_t kRecordOffset = 100;
inline constexpr std::int64_t kRecordPosition = kRecordPageSize + kRecordOffset;

inline HandMadeDatabase databaseWithRecord(const Bytes& record) {
    HandMadeDatabase database(kRecordPageSize, 4);
    database.put(kRecordPosition, record);
    return database;
}

/// A parser that stands on the record.
inline std::shared_ptr<DlxSQLiteParser> parserOnRecord(const Bytes& record) {
    return parserAt(databaseWithRecord(record), 2, kRecordOffset);
}

/// A number below 128 as one that takes `width` bytes.
inline Bytes paddedVarint(std::uint8_t number, std::size_t width) {
    Bytes bytes(width, 0x80);
    bytes.back() = number;
    return bytes;
}

/// A parser that could not read its file.
inline std::shared_ptr<DlxSQLiteParser> parserWithoutReader() {
    return DlxSQLiteParser::initWithDBPath("/no/such/file");
}

}  // namespace ZkMobileBackup::testing
