#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recovery/DlxSQLiteDBHeader.h"
#include "recovery/DlxSQLiteReader.h"
#include "recovery/engine/byte_image.h"
#include "recovery/engine/numbers.h"
#include "recovery/model/RowStore.h"
#include "recovery/model/TableObject.h"

namespace ZkMobileBackup::engine {

/// What every step of one parser works on.
struct ParserState {
    std::shared_ptr<DlxSQLiteReader> reader;    // null when the file could not be read
    std::shared_ptr<DlxSQLiteDBHeader> header;  // null without a reader
    std::shared_ptr<RowStore> rows = std::make_shared<RowStore>();
    std::vector<std::shared_ptr<RawTableObject>> tables;
    std::atomic<bool> stop{false};
    std::int64_t tableCount = 0;
    std::int64_t dbIndex = 0;
    std::uint64_t pageVisits = 0;
    std::optional<std::string> lastError;

    bool complete() const { return reader != nullptr && header != nullptr; }
    /// Every byte of the file, which must be there.
    ByteImage& image() { return reader->image(); }
    const ByteImage& image() const { return std::as_const(*reader).image(); }

    /// Notes a failure of the operation named `method` and yields false.
    bool fail(std::string_view text, std::string_view method) {
        lastError = std::string(text) + ":DlxSQLiteParser::" + std::string(method);
        return false;
    }
    bool failInvalidParameter(std::string_view method) { return fail("Invaid parameter", method); }

    bool shouldStop() const { return stop.load(std::memory_order_relaxed); }

    // The bounds of a position, each rule with its own: dbEnd is the position of the last byte.
    bool isBeyondEnd(std::int64_t position) const { return position > reader->dbEnd(); }
    bool isAtOrPastEnd(std::int64_t position) const { return position >= reader->dbEnd(); }
    bool isBeforeEnd(std::int64_t position) const { return position < reader->dbEnd(); }

    /// Start of page `number`, counted from 1. The product wraps at 32 bits, so a damaged number may name a page inside
    /// the image, and number 0 one far outside.
    std::int64_t pageStart(std::uint32_t number) const {
        return reader->dbOrigin() + std::int64_t{std::uint32_t{header->pageSize()} * (number - 1)};
    }
    /// Moves the cursor to a page.
    void enterPage(std::int64_t start) {
        moveToPageStart(start);
        reader->setDbCurPageLimit(start + header->pageSize());
    }
    /// Moves the cursor to a page and leaves the page limit of the page entered before.
    void moveToPageStart(std::int64_t start) {
        reader->setDbCurPageOffset(start);
        reader->setDbCurOffset(start);
    }
    /// Type byte at the cursor; 0, which is no type, once the run has visited as many pages as it may.
    std::uint8_t visitPage() {
        if (pageVisitsExhausted()) return 0;
        ++pageVisits;
        return image().byte(reader->dbCurOffset());
    }
    bool pageVisitsExhausted() const { return pageVisits >= header->maxPageVisits(); }
};

/// Type bytes of the B-tree pages that are walked; index pages never are.
enum PageType : std::uint8_t { kInteriorTablePage = 5, kLeafTablePage = 13 };

}  // namespace ZkMobileBackup::engine
