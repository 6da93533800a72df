#pragma once

#include <cstddef>
#include <cstdint>

#include "base/Api.h"

namespace ZkMobileBackup {

/// Big-endian unsigned 16-bit number at `buffer` + `offset`; 0 when the buffer is null, the length is 0, or
/// `offset` + 2 is more than `length`. `length` is the caller's own idea of the extent: nothing else is checked.
ZKMB_API std::uint16_t converterNetShortToLocalShortFromBuff(const std::uint8_t* buffer, std::uint64_t length,
                                                             std::uint64_t offset);

/// Big-endian unsigned 32-bit number at `buffer` + `offset`, under the same conditions with `offset` + 4.
ZKMB_API std::uint32_t converterNetInt32ToLocalInt32FromBuff(const std::uint8_t* buffer, std::uint64_t length,
                                                             std::uint64_t offset);

/// Reads a variable-length number from `start` on, never the byte at `limit`.
///
/// Every byte contributes 7 bits, and the accumulator is shifted by 0, 7, 14, 21, ... before the next byte is added, so
/// numbers of one and two bytes read as SQLite wrote them and longer ones do not. There is no special ninth byte.
/// Returns the number of bytes consumed; 0 with nothing written when `start` or `limit` is null; 0 with the value 0
/// when no byte lies before `limit`. `end`, which may be null, receives the position after the number, one further when
/// the limit cut it short.
ZKMB_API int varintDecode(std::uint64_t* value, const std::uint8_t* start, const std::uint8_t** end,
                          const std::uint8_t* limit);

/// The byte as a signed 8-bit number, -128 to 127.
ZKMB_API std::int8_t converterUnSignedCharToSignedChar(std::uint8_t byte);

}  // namespace ZkMobileBackup
