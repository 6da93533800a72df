#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "base/Api.h"

namespace ZkMobileBackup {

class DlxSQLiteReader;

/// Four fields of a database file's header, and the limits that decoding and carving apply. The fields are read once,
/// when the object is made, and nothing about them is checked. Limits may be changed until parsing begins.
/// "Paylaod" stands for payload.
class ZKMB_API DlxSQLiteDBHeader {
public:
    // initWithSQLiteReader: null without a reader.
    static std::shared_ptr<DlxSQLiteDBHeader> initWithSQLiteReader(const std::shared_ptr<DlxSQLiteReader>& reader);

    DlxSQLiteDBHeader(const DlxSQLiteDBHeader&) = delete;
    DlxSQLiteDBHeader& operator=(const DlxSQLiteDBHeader&) = delete;

    /// Bytes a page. The stored 1, which stands for 65536 elsewhere, is the number 1 here.
    std::uint16_t pageSize() const { return pageSize_; }
    void setPageSize(std::uint16_t size) { pageSize_ = size; }
    /// Low 16 bits of the stored page count: overflow pages above it count as invalid, also in a file that has them.
    std::uint16_t pageCount() const { return pageCount_; }
    void setPageCount(std::uint16_t count) { pageCount_ = count; }
    /// First trunk page of the freelist.
    std::uint32_t freePageFirstPageNum() const { return freePageFirstPageNum_; }
    void setFreePageFirstPageNum(std::uint32_t number) { freePageFirstPageNum_ = number; }
    /// Number of pages on the freelist.
    std::uint32_t freePagePageCount() const { return freePagePageCount_; }
    void setFreePagePageCount(std::uint32_t count) { freePagePageCount_ = count; }
    /// Always 0 unless set: texts are read as UTF-8 whatever the file says.
    std::uint32_t characterCodingType() const { return characterCodingType_; }
    void setCharacterCodingType(std::uint32_t type) { characterCodingType_ = type; }

    /// A record with fewer cells is rejected.
    std::int32_t minCellCount() const { return minCellCount_; }
    void setMinCellCount(std::int32_t count) { minCellCount_ = count; }
    /// A record's header is not read further once it has more cells.
    std::int32_t maxCellCount() const { return maxCellCount_; }
    void setMaxCellCount(std::int32_t count) { maxCellCount_ = count; }
    /// A record with a shorter payload, in bytes, is rejected.
    std::uint64_t minPaylaodLen() const { return minPaylaodLen_; }
    void setMinPaylaodLen(std::uint64_t length) { minPaylaodLen_ = length; }
    /// A record with a longer payload, in bytes, is rejected.
    std::uint64_t maxPaylaodLen() const { return maxPaylaodLen_; }
    void setMaxPaylaodLen(std::uint64_t length) { maxPaylaodLen_ = length; }
    /// 0 drops every blob from the rows.
    std::int32_t reportBlobs() const { return reportBlobs_; }
    void setReportBlobs(std::int32_t flag) { reportBlobs_ = flag; }
    /// Blobs met so far; names blob files.
    std::int32_t blobCount() const { return blobCount_; }
    void setBlobCount(std::int32_t count) { blobCount_ = count; }
    /// Blobs of this many bytes and more go to a file "N.blob" in the working directory and not into the row.
    std::uint64_t blobSizeLimit() const { return blobSizeLimit_; }
    void setBlobSizeLimit(std::uint64_t limit) { blobSizeLimit_ = limit; }

    const std::optional<std::string>& lastError() const { return lastError_; }
    void setLastError(std::optional<std::string> text) { lastError_ = std::move(text); }
    void clearLastError() { lastError_.reset(); }

    // ---- Additions of this library ----

    /// Pages that one run of a parser visits at most; every page beyond is taken for one of no known type. The default
    /// is far more than any sound file needs: 64 times the pages in the image plus 65536.
    std::uint64_t maxPageVisits() const { return maxPageVisits_; }
    void setMaxPageVisits(std::uint64_t visits) { maxPageVisits_ = visits; }

protected:
    explicit DlxSQLiteDBHeader(const DlxSQLiteReader& reader);

private:
    static constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

    std::uint16_t pageSize_ = 0;
    std::uint16_t pageCount_ = 0;
    std::uint32_t freePageFirstPageNum_ = 0;
    std::uint32_t freePagePageCount_ = 0;
    std::uint32_t characterCodingType_ = 0;
    std::int32_t minCellCount_ = 2;
    std::int32_t maxCellCount_ = 1000;
    std::uint64_t minPaylaodLen_ = 2;
    std::uint64_t maxPaylaodLen_ = kUnlimited;
    std::int32_t reportBlobs_ = 1;
    std::int32_t blobCount_ = 0;
    std::uint64_t blobSizeLimit_ = kUnlimited;
    std::uint64_t maxPageVisits_ = 0;
    std::optional<std::string> lastError_;
};

}  // namespace ZkMobileBackup
