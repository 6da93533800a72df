#include "recovery/DlxSQLiteDBHeader.h"
#include "recovery/DlxSQLiteReader.h"
#include "recovery/engine/checked_fields.h"
#include "recovery/engine/numbers.h"

namespace ZkMobileBackup {

namespace {

// Where the file header keeps its fields.
constexpr std::int64_t kPageSizeField = 16;
constexpr std::int64_t kPageCountField = 28;
constexpr std::int64_t kFirstFreePageField = 32;
constexpr std::int64_t kFreePageCountField = 36;

std::uint64_t defaultPageVisits(std::uint64_t imageSize, std::uint16_t pageSize) {
    constexpr std::uint64_t kVisitsPerPage = 64;
    constexpr std::uint64_t kVisitsOfAnyFile = 65536;
    const std::uint64_t pages = pageSize == 0 ? 0 : imageSize / pageSize + (imageSize % pageSize == 0 ? 0 : 1);
    return kVisitsPerPage * pages + kVisitsOfAnyFile;
}

}  // namespace

std::shared_ptr<DlxSQLiteDBHeader> DlxSQLiteDBHeader::initWithSQLiteReader(
    const std::shared_ptr<DlxSQLiteReader>& reader) {
    if (reader == nullptr) return nullptr;
    return std::shared_ptr<DlxSQLiteDBHeader>(new DlxSQLiteDBHeader(*reader));
}

DlxSQLiteDBHeader::DlxSQLiteDBHeader(const DlxSQLiteReader& reader) {
    const engine::CheckedFields fields(reader.image(), reader.dbOrigin(), static_cast<std::int64_t>(reader.dbSize()));
    pageSize_ = fields.big16(kPageSizeField);
    pageCount_ = engine::low16(std::uint64_t{fields.big32(kPageCountField)});
    freePageFirstPageNum_ = fields.big32(kFirstFreePageField);
    freePagePageCount_ = fields.big32(kFreePageCountField);
    maxPageVisits_ = defaultPageVisits(reader.dbSize(), pageSize_);
}

}  // namespace ZkMobileBackup
