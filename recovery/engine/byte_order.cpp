#include "recovery/ByteFunctions.h"
#include "recovery/engine/varint.h"

namespace ZkMobileBackup {

namespace {

bool fieldFits(const std::uint8_t* buffer, std::uint64_t length, std::uint64_t offset, std::uint64_t width) {
    return buffer != nullptr && length >= width && offset <= length - width;
}

}  // namespace

std::uint16_t converterNetShortToLocalShortFromBuff(const std::uint8_t* buffer, std::uint64_t length,
                                                    std::uint64_t offset) {
    if (!fieldFits(buffer, length, offset, 2)) return 0;
    return static_cast<std::uint16_t>(buffer[offset] << 8 | buffer[offset + 1]);
}

std::uint32_t converterNetInt32ToLocalInt32FromBuff(const std::uint8_t* buffer, std::uint64_t length,
                                                    std::uint64_t offset) {
    if (!fieldFits(buffer, length, offset, 4)) return 0;
    const std::uint8_t* field = buffer + offset;
    return std::uint32_t{field[0]} << 24 | std::uint32_t{field[1]} << 16 | std::uint32_t{field[2]} << 8 | field[3];
}

int varintDecode(std::uint64_t* value, const std::uint8_t* start, const std::uint8_t** end, const std::uint8_t* limit) {
    if (start == nullptr || limit == nullptr) return 0;
    const engine::Varint varint =
        engine::readVarint([start](std::int64_t i) { return start[i]; }, static_cast<std::int64_t>(limit - start));
    if (value != nullptr) *value = varint.value;
    if (end != nullptr) *end = start + varint.advance;
    return static_cast<int>(varint.consumed);
}

std::int8_t converterUnSignedCharToSignedChar(std::uint8_t byte) {
    return static_cast<std::int8_t>(byte);
}

}  // namespace ZkMobileBackup
