#include "recovery/engine/column_signature.h"

#include <algorithm>
#include <bit>

#include "base/Text.h"
#include "recovery/engine/numbers.h"
#include "recovery/engine/serial_types.h"

namespace ZkMobileBackup::engine {

ColumnSignature::ColumnTest::ColumnTest(const ColumnType& type)
    : code_(type.code), hasDefault_(type.defaultText.has_value()) {
    if (hasDefault_) {
        defaultInteger_ = integerValue(*type.defaultText);
        defaultFloat_ = floatValue(*type.defaultText);
    }
    for (std::int32_t i = 0; i < kFirstLongSerialType; ++i) acceptsShort_[static_cast<std::size_t>(i)] = accepts(i);
}

// A default is compared with the serial type itself, not with the value behind it. It costs nothing and widens what is
// found: results are compared by it.
bool ColumnSignature::ColumnTest::accepts(std::int32_t serialType) const {
    const SerialType& kind = serialTypeOf(serialType);
    switch (code_) {
        case kColumnInteger:
            return (hasDefault_ && serialType == defaultInteger_) || kind.is(kIntegerClass);
        case kColumnText:
            return hasDefault_ || kind.is(kTextClass);
        case kColumnBlob:
            return kind.is(kBlobClass);
        case kColumnFloat:
            return (hasDefault_ && serialType >= 0 && static_cast<double>(serialType) == defaultFloat_) ||
                   kind.is(kFloatClass);
        default:
            return false;
    }
}

ColumnSignature::ColumnSignature(const RawTableObject& table) : hasColumnTypes_(!table.filedTypeList().empty()) {
    // The serial type of a key column is lost together with the rowid.
    const std::size_t first = table.hasIntergerPK() ? 1 : 0;
    for (std::size_t i = first; i < table.filedTypeList().size(); ++i) tests_.emplace_back(table.filedTypeList()[i]);
    prepareQuickLook();
}

void ColumnSignature::prepareQuickLook() {
    const std::size_t count = std::min(kMostQuickTests, tests_.size());
    if (count == 0) return;
    const Starts last = Starts{1} << (count - 1);
    decided_ = last | kUndecided;
    for (std::size_t byte = 0; byte < possibleStarts_.size(); ++byte) {
        if (byte >= kFirstLongSerialType) {
            possibleStarts_[byte] = kUndecided | last | (last - 1);
            continue;
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (tests_[i].acceptsStored(byte)) possibleStarts_[byte] |= Starts{1} << i;
        }
    }
}

ColumnSignature::Match ColumnSignature::matchAt(const ByteImage& image, std::int64_t position,
                                                std::int64_t dbEnd) const {
    return hasColumnTypes_ ? testsAt(image, position, dbEnd) : Match{};
}

/// Part of the loop over all free bytes.
[[gnu::always_inline]] inline ColumnSignature::Match ColumnSignature::testsAt(const ByteImage& image,
                                                                              std::int64_t position,
                                                                              std::int64_t dbEnd) const {
    const std::span<const std::uint8_t> bytes = image.bytes(position, dbEnd - position);
    std::size_t at = 0;
    // The serial type's number stands in for the content's size: more than the record really takes.
    std::uint64_t length = 0;
    std::uint64_t anyType = 0;
    const ColumnTest* test = tests_.data();
    const ColumnTest* const testsEnd = test + tests_.size();
    for (;; ++test) {
        // Nearly all serial types take one byte.
        for (; test != testsEnd && at < bytes.size() && bytes[at] < kFirstLongSerialType; ++test, ++at) {
            if (!test->acceptsSingle(bytes[at])) return {false, low16(length)};
            length += 1U + bytes[at];
            anyType |= bytes[at];
        }
        const std::int64_t rest = position + static_cast<std::int64_t>(at);
        if (test == testsEnd || rest >= dbEnd) break;
        const Varint stored = image.shortVarint(rest, dbEnd);
        if (!test->acceptsStored(stored.value) || stored.tooLong()) return {false, low16(length)};
        length += static_cast<std::uint64_t>(stored.consumed) + stored.value;
        at += static_cast<std::size_t>(stored.advance);
        anyType |= stored.value;
    }
    return {true, low16(length), anyType == 0 && length == tests_.size() && test == testsEnd};
}

std::int64_t ColumnSignature::nextMatch(const ByteImage& image, std::int64_t position, std::int64_t bound,
                                        std::int64_t dbEnd) const {
    if (!hasColumnTypes_) return std::max(position, bound);
    if (tests_.empty() || position >= bound) return position;
    // The tests of a start before the bound may go on behind it, but not past the image's end.
    constexpr auto kBehindBound = static_cast<std::int64_t>(kMostQuickTests);
    const std::span<const std::uint8_t> bytes = image.bytes(position, std::min(bound + kBehindBound, dbEnd) - position);
    const std::size_t end = std::min(bytes.size(), static_cast<std::size_t>(bound - position));
    std::size_t start = quickLook(bytes, 0, end);
    while (start < end && (firstTestFails(bytes.subspan(start)) ||
                           !testsAt(image, position + static_cast<std::int64_t>(start), dbEnd).accepted)) {
        start = quickLook(bytes, start + 1, end);
    }
    return position + static_cast<std::int64_t>(start);
}

/// Whether the bytes begin with a serial type of two bytes that is not the first column's: the quick look does not
/// tell.
[[gnu::always_inline]] inline bool ColumnSignature::firstTestFails(std::span<const std::uint8_t> bytes) const {
    return bytes.size() >= 2 && bytes[0] >= 0x80 && bytes[1] < 0x80 &&
           !tests_.front().acceptsStored(std::uint64_t{bytes[0] & 0x7FU} << 7U | bytes[1]);
}

/// The first start from `at` on and before `end` that a quick look does not turn down, `end` for none. Goes over the
/// bytes once and keeps every start that is still possible.
[[gnu::always_inline]] inline std::size_t ColumnSignature::quickLook(std::span<const std::uint8_t> bytes,
                                                                     std::size_t at, std::size_t end) const {
    const Starts decided = decided_;
    Starts starts = 0;
    for (; at < end && (starts & decided) == 0; ++at) {
        starts = (starts << 1U | 1U | kUndecided) & possibleStarts_[bytes[at]];
    }
    for (; at < bytes.size() && starts != 0 && (starts & decided) == 0; ++at) {
        starts = (starts << 1U | kUndecided) & possibleStarts_[bytes[at]];
    }
    const auto sinceEarliest = static_cast<std::size_t>(std::bit_width(starts & ~kUndecided));
    return starts == 0 ? end : at - sinceEarliest;
}

}  // namespace ZkMobileBackup::engine
