#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "base/Api.h"

namespace ZkMobileBackup {

namespace engine {
class ByteImage;
}

/// Holds the image of one database file and the cursor with which its parser walks it.
///
/// Cursor properties are positions in the image: 0 is its first byte, `dbEnd` its last one. A position may lie outside
/// the image, where every byte reads as 0. One reader serves one parser on one thread.
class ZKMB_API DlxSQLiteReader {
public:
    // initWithDBPath: null when the path names nothing that can be read.
    static std::shared_ptr<DlxSQLiteReader> initWithDBPath(const std::string& path);
    // initWithDBData: reads a copy of the bytes.
    static std::shared_ptr<DlxSQLiteReader> initWithDBData(std::span<const std::uint8_t> bytes);

    ~DlxSQLiteReader();
    DlxSQLiteReader(const DlxSQLiteReader&) = delete;
    DlxSQLiteReader& operator=(const DlxSQLiteReader&) = delete;

    /// Length of the image in bytes.
    std::uint64_t dbSize() const { return dbSize_; }
    void setDbSize(std::uint64_t size) { dbSize_ = size; }
    std::int64_t dbOrigin() const { return dbOrigin_; }
    void setDbOrigin(std::int64_t position) { dbOrigin_ = position; }
    /// Position of the LAST byte, not one past it; one before the origin for an empty image.
    std::int64_t dbEnd() const { return dbEnd_; }
    void setDbEnd(std::int64_t position) { dbEnd_ = position; }
    /// The cursor: the byte that the next step looks at.
    std::int64_t dbCurOffset() const { return dbCurOffset_; }
    void setDbCurOffset(std::int64_t position) { dbCurOffset_ = position; }
    /// Start of the page that is being read.
    std::int64_t dbCurPageOffset() const { return dbCurPageOffset_; }
    void setDbCurPageOffset(std::int64_t position) { dbCurPageOffset_ = position; }
    /// End of the page that is being read, one past its last byte.
    std::int64_t dbCurPageLimit() const { return dbCurPageLimit_; }
    void setDbCurPageLimit(std::int64_t position) { dbCurPageLimit_ = position; }

    const std::optional<std::string>& lastError() const { return lastError_; }
    void setLastError(std::optional<std::string> text) { lastError_ = std::move(text); }
    void clearLastError() { lastError_.reset(); }

    /// The bytes, for the engine.
    engine::ByteImage& image() { return *image_; }
    const engine::ByteImage& image() const { return *image_; }

protected:
    explicit DlxSQLiteReader(std::unique_ptr<engine::ByteImage> image);

private:
    static std::shared_ptr<DlxSQLiteReader> withImage(std::unique_ptr<engine::ByteImage> image);

    std::optional<std::string> lastError_;
    std::unique_ptr<engine::ByteImage> image_;
    std::int64_t dbEnd_ = 0;
    std::int64_t dbOrigin_ = 0;
    std::uint64_t dbSize_ = 0;
    std::int64_t dbCurOffset_ = 0;
    std::int64_t dbCurPageLimit_ = 0;
    std::int64_t dbCurPageOffset_ = 0;
};

}  // namespace ZkMobileBackup
