#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "recovery/engine/parser_state.h"
#include "recovery/engine/serial_types.h"
#include "recovery/model/Payload.h"
#include "recovery/model/Row.h"

namespace ZkMobileBackup::engine {

/// Turns decoded records into rows of texts. The state must be complete.
class PayloadRenderer {
public:
    explicit PayloadRenderer(ParserState& state) : state_(state) {}

    /// The row of the record at the cursor in a RecordMode, empty when it has a cell of an invalid type. Splices the
    /// record's overflow pages into the image first.
    std::optional<Row> render(PayloadObject& payload, std::int64_t mode);

    /// The text of `length` bytes at `content`; empty when it begins beyond `limit`, past which no piece of it begins.
    static std::string text(const ByteImage& image, std::int64_t content, std::int64_t length, std::int64_t limit);
    /// Upper-case hexadecimal digits of the part of the blob that lies in the image.
    static std::string hexDigits(const ByteImage& image, std::int64_t content, std::uint16_t length);
    /// Writes a blob to "N.blob" in the working directory; a file that cannot be opened is passed over.
    static void writeBlobFile(const ByteImage& image, std::int64_t content, std::int64_t length, std::int32_t index);

private:
    void mapContent(PayloadObject& payload);
    void appendCell(RowWriter& row, const ByteImage& image, Rendering rendering, std::int64_t content,
                    std::int32_t size);
    void appendText(RowWriter& row, std::int64_t content, std::int64_t length);
    void appendBlob(RowWriter& row, std::int64_t content, std::int64_t length);

    ParserState& state_;
};

}  // namespace ZkMobileBackup::engine
