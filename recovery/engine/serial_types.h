#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "recovery/model/Payload.h"

namespace ZkMobileBackup::engine {

/// How the content of a cell becomes text.
enum class Rendering : std::uint8_t {
    kInvalid,     ///< no text: the row is given up
    kNull,        ///< "NULL"
    kSigned8,     ///< 1 byte, signed
    kUnsigned16,  ///< 2 bytes, unsigned: negative values of this width read as 32768 and above
    kFolded24,    ///< bytes 0-1 unsigned, times 16, plus byte 2 signed
    kSigned32,    ///< 4 bytes, signed
    kFolded48,    ///< (bytes 0-3 shifted left by 4) plus byte 4 signed, in 32 bits
    kFolded64,    ///< (bytes 0-3 shifted left by 8) plus bytes 4-5 unsigned, in 32 bits
    kFirstByte,   ///< byte 0 times 2^24, as a floating number with six decimals
    kZero,        ///< "0"
    kOne,         ///< "1"
    kBlob,        ///< hexadecimal digits
    kText,        ///< UTF-8
};

/// Kinds of columns that a serial type fits; see the predicates of the parser.
enum TypeClass : std::uint8_t { kIntegerClass = 1, kFloatClass = 2, kTextClass = 4, kBlobClass = 8 };

/// One kind of serial type.
struct SerialType {
    std::int32_t cellType;     ///< PayloadCell::type
    std::int32_t contentSize;  ///< bytes, or kSizeFromType
    Rendering rendering;
    std::uint8_t classes;  ///< TypeClass bits

    static constexpr std::int32_t kSizeFromType = -1;
    constexpr bool valid() const { return rendering != Rendering::kInvalid; }
    bool is(TypeClass typeClass) const { return (classes & typeClass) != 0; }
};

// By stored serial type; the last two stand for all even and all odd ones from 12 on. Sizes are the file format's.
// Several renderings are this engine's own and differ from the values that were stored: results are compared by them.
inline constexpr std::array<SerialType, 14> kSerialTypes = {{
    {0, 0, Rendering::kNull, kTextClass | kBlobClass},
    {1, 1, Rendering::kSigned8, kIntegerClass},
    {2, 2, Rendering::kUnsigned16, kIntegerClass},
    {3, 3, Rendering::kFolded24, kIntegerClass},
    {4, 4, Rendering::kSigned32, kIntegerClass},
    {5, 6, Rendering::kFolded48, kIntegerClass},
    {6, 8, Rendering::kFolded64, kIntegerClass},
    {7, 8, Rendering::kFirstByte, kIntegerClass | kFloatClass},
    {8, 0, Rendering::kZero, kIntegerClass},
    {9, 0, Rendering::kOne, kIntegerClass},
    {10, 0, Rendering::kInvalid, kIntegerClass},
    {11, 0, Rendering::kInvalid, kIntegerClass},
    {PayloadCell::kBlob, SerialType::kSizeFromType, Rendering::kBlob, kBlobClass},
    {PayloadCell::kText, SerialType::kSizeFromType, Rendering::kText, kTextClass},
}};
inline constexpr SerialType kNoSerialType = {-1, 0, Rendering::kInvalid, 0};

/// The kind of a stored serial type. A negative one, left over when a longer number is cut to 32 bits, is of no valid
/// kind and fits no column.
constexpr const SerialType& serialTypeOf(std::int32_t stored) {
    if (stored < 0) return kNoSerialType;
    if (stored <= PayloadCell::kText) return kSerialTypes[static_cast<std::size_t>(stored)];
    return kSerialTypes[stored % 2 == 0 ? PayloadCell::kBlob : PayloadCell::kText];
}

/// The kind of a decoded cell by its PayloadCell::type.
constexpr const SerialType& serialTypeOfCell(std::int32_t cellType) {
    return cellType >= 0 && cellType <= PayloadCell::kText ? kSerialTypes[static_cast<std::size_t>(cellType)]
                                                           : kNoSerialType;
}

/// Content size in bytes of a stored serial type.
constexpr std::int32_t contentSize(const SerialType& kind, std::int32_t stored) {
    return kind.contentSize == SerialType::kSizeFromType ? (stored - kind.cellType) / 2 : kind.contentSize;
}

/// What a header says of one cell.
struct CellShape {
    std::int32_t cellType = 0;  ///< PayloadCell::type; of a serial type that is not valid the type itself
    std::int32_t size = 0;      ///< bytes of content
    bool valid = false;
};
constexpr CellShape cellShapeOf(std::int32_t stored) {
    const SerialType& kind = serialTypeOf(stored);
    if (!kind.valid()) return {stored, 0, false};
    return {kind.cellType, contentSize(kind, stored), true};
}

/// Serial types below this one take a single byte.
inline constexpr std::int32_t kFirstLongSerialType = 0x80;

/// CellShape of the serial types of a single byte, nearly all, in two bytes.
struct SingleByteShape {
    static constexpr std::int8_t kNone = -1;

    std::int8_t cellType = kNone;
    std::int8_t size = kNone;
    constexpr bool valid() const { return size != kNone; }
};
/// By the first byte of a serial type; not valid for one that goes on.
inline constexpr auto kSingleByteShapes = [] {
    std::array<SingleByteShape, 256> shapes{};
    for (std::int32_t stored = 0; stored < kFirstLongSerialType; ++stored) {
        const CellShape shape = cellShapeOf(stored);
        if (!shape.valid) continue;
        shapes[static_cast<std::size_t>(stored)] = {static_cast<std::int8_t>(shape.cellType),
                                                    static_cast<std::int8_t>(shape.size)};
    }
    return shapes;
}();

}  // namespace ZkMobileBackup::engine
