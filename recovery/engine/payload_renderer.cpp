#include "recovery/engine/payload_renderer.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "base/Text.h"
#include "recovery/engine/overflow_chain.h"
#include "recovery/engine/payload_decoder.h"
#include "recovery/model/hex_digits.h"

namespace ZkMobileBackup::engine {

namespace {

// Texts are read in pieces of this many bytes; each ends at its first NUL and is dropped where it is no valid UTF-8, so
// a character that spans two pieces is lost with both.
constexpr std::int64_t kTextChunk = 4096;

/// The value is whole: its six decimals are zeros, whatever decimal sign the host's locale has.
[[gnu::noinline]] std::string firstByteNumber(const ByteImage& image, std::int64_t content) {
    return std::to_string(std::uint32_t{image.byte(content)} << 24U) + ".000000";
}

/// The bytes before the first NUL, empty where they are no valid UTF-8.
std::string_view readableText(std::span<const std::uint8_t> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::string_view untilNul = text.substr(0, text.find('\0'));
    return isValidUtf8(untilNul) ? untilNul : std::string_view();
}

}  // namespace

// These three are parts of the loop over all cells of all records: inlined, they leave the writer in registers.

[[gnu::always_inline]] inline void PayloadRenderer::appendText(RowWriter& row, std::int64_t content,
                                                               std::int64_t length) {
    if (length > kTextChunk) {
        row.append(text(state_.image(), content, length, state_.reader->dbEnd()));
    } else {
        row.append(readableText(state_.image().bytes(content, length)));
    }
}

[[gnu::always_inline]] inline void PayloadRenderer::appendBlob(RowWriter& row, std::int64_t content,
                                                               std::int64_t length) {
    DlxSQLiteDBHeader& header = *state_.header;
    if (header.reportBlobs() != 0) {
        if (static_cast<std::uint64_t>(length) >= header.blobSizeLimit()) {
            writeBlobFile(state_.image(), content, length, header.blobCount());
        } else {
            // Blobs are shown with their length cut to 16 bits: one of 65536 bytes is the empty text.
            row.appendHexDigits(state_.image().bytes(content, low16(length)));
        }
    }
    header.setBlobCount(wrappedSum32(header.blobCount(), 1));
}

[[gnu::always_inline]] inline void PayloadRenderer::appendCell(RowWriter& row, const ByteImage& image,
                                                               Rendering rendering, std::int64_t content,
                                                               std::int32_t size) {
    const auto signedByte = [&image](std::int64_t at) { return static_cast<std::int8_t>(image.byte(at)); };
    switch (rendering) {
        case Rendering::kInvalid:
            return;
        case Rendering::kNull:
            return row.append(FrequentText::kNull);
        case Rendering::kZero:
            return row.append(FrequentText::kZero);
        case Rendering::kOne:
            return row.append(FrequentText::kOne);
        case Rendering::kSigned8:
            return row.appendInteger(std::int32_t{signedByte(content)});
        case Rendering::kUnsigned16:
            return row.appendInteger(std::int32_t{image.big16(content)});
        case Rendering::kFolded24:
            return row.appendInteger(image.big16(content) * 16 + signedByte(content + 2));
        case Rendering::kSigned32:
            return row.appendInteger(signed32(image.big32(content)));
        case Rendering::kFolded48:
            return row.appendInteger(wrappedSum32(signed32(image.big32(content) << 4U), signedByte(content + 4)));
        case Rendering::kFolded64:
            return row.appendInteger(wrappedSum32(signed32(image.big32(content) << 8U), image.big16(content + 4)));
        case Rendering::kFirstByte:
            return row.append(firstByteNumber(image, content));
        case Rendering::kBlob:
            return appendBlob(row, content, size);
        case Rendering::kText:
            if (size > kTextChunk || !row.appendPlain(image.bytes(content, size))) appendText(row, content, size);
            return;
    }
}

std::optional<Row> PayloadRenderer::render(PayloadObject& payload, std::int64_t mode) {
    mapContent(payload);
    RowWriter row = state_.rows->beginRow();
    const bool keyIsRowid = mode == kLiveCell && payload.ignoreFirstFiled();
    if (mode != kLiveCell) {
        row.append(FrequentText::kMinusOne);
    } else if (keyIsRowid) {
        row.appendInteger(static_cast<std::int64_t>(payload.rowid()));
    }
    const ByteImage& image = state_.image();
    const std::span<const PayloadCell> cells = payload.cellList();
    const std::int64_t base = *payload.mappedData();
    const std::int64_t dbEnd = state_.reader->dbEnd();
    for (const PayloadCell& cell : cells.subspan(keyIsRowid && !cells.empty() ? 1 : 0)) {
        const std::int64_t content = base + cell.offset();
        const Rendering rendering = serialTypeOfCell(cell.type()).rendering;
        if (content > dbEnd) {
            row.append("");
        } else if (rendering == Rendering::kInvalid) {
            return std::nullopt;
        } else {
            appendCell(row, image, rendering, content, cell.size());
        }
    }
    return row.finish();
}

void PayloadRenderer::mapContent(PayloadObject& payload) {
    const std::int64_t cursor = state_.reader->dbCurOffset();
    const std::int64_t pageLimit = state_.reader->dbCurPageLimit();
    payload.setMappedData(cursor);
    if (payload.overFlowPageList().empty()) {
        payload.setMappedDataEndpoint(pageLimit);
        return;
    }
    payload.setMappedDataEndpoint(spliceOverflowPages(state_, payload.overFlowPageList(), pageLimit - kPageNumberSize));
}

std::string PayloadRenderer::text(const ByteImage& image, std::int64_t content, std::int64_t length,
                                  std::int64_t limit) {
    std::string result;
    std::int64_t consumed = 0;
    if (content > limit) return result;
    for (std::int64_t remaining = length; remaining >= 1;) {
        const std::int64_t chunk = std::min(remaining, kTextChunk);
        // A text that claims to go on past the limit is read from the limit again and again.
        const std::int64_t start = std::min(limit - content, consumed);
        result += readableText(image.bytes(content + start, chunk));
        consumed = start + chunk;
        remaining -= chunk;
    }
    return result;
}

std::string PayloadRenderer::hexDigits(const ByteImage& image, std::int64_t content, std::uint16_t length) {
    const std::span<const std::uint8_t> blob = image.bytes(content, length);
    std::string digits(2 * blob.size(), '0');
    writeHexDigits(blob, digits.data());
    return digits;
}

void PayloadRenderer::writeBlobFile(const ByteImage& image, std::int64_t content, std::int64_t length,
                                    std::int32_t index) {
    const std::string name = std::to_string(index) + ".blob";
    constexpr mode_t kOwnerOnly = 0600;
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kOwnerOnly);
    if (file < 0) return;
    std::span<const std::uint8_t> rest = image.bytes(content, length);
    while (!rest.empty()) {
        const ssize_t written = write(file, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) break;
        rest = rest.subspan(static_cast<std::size_t>(written));
    }
    close(file);
}

}  // namespace ZkMobileBackup::engine
