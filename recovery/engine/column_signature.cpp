#include "recovery/engine/column_signature.h"

#include <algorithm>

#include "base/Text.h"
#include "recovery/engine/numbers.h"
#include "recovery/engine/serial_types.h"

namespace ZkMobileBackup::engine {

namespace {

// Serial types from here on take more than a byte.
constexpr std::uint8_t kLongSerialType = 0x80;

std::size_t leadingZeros(std::span<const std::uint8_t> bytes) {
    const auto end = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte != 0; });
    return static_cast<std::size_t>(end - bytes.begin());
}

}  // namespace

ColumnSignature::ColumnTest::ColumnTest(const ColumnType& type)
    : code_(type.code), hasDefault_(type.defaultText.has_value()) {
    if (hasDefault_) {
        defaultInteger_ = integerValue(*type.defaultText);
        defaultFloat_ = floatValue(*type.defaultText);
    }
    verdicts_.fill(kUndecided);
    for (std::int32_t type = 0; type < kLongSerialType; ++type) {
        verdicts_[static_cast<std::size_t>(type)] = accepts(type) ? kPasses : kTurnedDown;
    }
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
            return (hasDefault_ && static_cast<double>(serialType) == defaultFloat_) || kind.is(kFloatClass);
        default:
            return false;
    }
}

ColumnSignature::ColumnSignature(const RawTableObject& table) : hasColumnTypes_(!table.filedTypeList().empty()) {
    // The serial type of a key column is lost together with the rowid.
    const std::size_t first = table.hasIntergerPK() ? 1 : 0;
    for (std::size_t i = first; i < table.filedTypeList().size(); ++i) tests_.emplace_back(table.filedTypeList()[i]);
    zerosTurnedDown_ = zerosTurnedDown();
    for (ByteVerdicts& verdicts : prefix_) verdicts.fill(kPasses);
    for (std::size_t i = 0; i < std::min(kPrefix, tests_.size()); ++i) prefix_[i] = tests_[i].verdicts();
}

std::size_t ColumnSignature::zerosTurnedDown() const {
    const auto strict = std::find_if(tests_.begin(), tests_.end(), [](const auto& test) { return !test.accepts(0); });
    return strict != tests_.end() ? static_cast<std::size_t>(strict - tests_.begin()) + 1 : 0;
}

ColumnSignature::Match ColumnSignature::matchAt(const ByteImage& image, std::int64_t position,
                                                std::int64_t dbEnd) const {
    if (!hasColumnTypes_) return {};
    std::uint64_t length = 0;
    bool nulls = true;
    std::size_t test = 0;
    // The usual case first: serial types of one byte each.
    const auto mostBytes = static_cast<std::int64_t>(tests_.size());
    for (const std::uint8_t byte : image.bytes(position, std::min(mostBytes, dbEnd - position))) {
        const std::uint8_t verdict = tests_[test].verdicts()[byte];
        if (verdict == kTurnedDown) return {false, low16(length)};
        if (verdict == kUndecided) break;
        length += 1 + std::uint64_t{byte};
        ++position;
        ++test;
        nulls = nulls && byte == 0;
    }
    for (; test < tests_.size() && position < dbEnd; ++test) {
        const Varint stored = image.shortVarint(position, dbEnd);
        const std::int32_t type = signed32(low32(stored.value));
        if (stored.tooLong() || !tests_[test].accepts(type)) return {false, low16(length)};
        // The serial type's number stands in for the content's size: more than the record really takes.
        length += static_cast<std::uint64_t>(stored.consumed) + stored.value;
        position += stored.advance;
        nulls = false;
    }
    return {true, low16(length), nulls && test == tests_.size()};
}

/// Looks at kPrefix bytes. A serial type that goes on leaves the tests behind it undecided.
bool ColumnSignature::prefixMayMatch(std::span<const std::uint8_t, kPrefix> bytes) const {
    unsigned verdict = kPasses;
    for (std::size_t i = kPrefix; i-- > 0;) {
        const unsigned own = prefix_[i][bytes[i]];
        verdict = own & (own >> 1U | verdict);
    }
    return (verdict & kPasses) != 0;
}

std::int64_t ColumnSignature::nextPossibleMatch(const ByteImage& image, std::int64_t position, std::int64_t bound,
                                                std::int64_t dbEnd) const {
    if (!hasColumnTypes_) return std::max(position, bound);
    if (tests_.empty() || position >= bound) return position;
    // Near the image's end fewer bytes decide: nothing is passed over there.
    const auto lookedAt = static_cast<std::int64_t>(kPrefix);
    const std::int64_t lastStart = std::min(bound, dbEnd - lookedAt);
    const std::span<const std::uint8_t> bytes = image.bytes(position, lastStart - position + lookedAt);
    if (bytes.size() <= kPrefix) return position;
    const std::size_t end = bytes.size() - kPrefix;
    std::size_t at = 0;
    for (; at < end; ++at) {
        if (!prefixMayMatch(bytes.subspan(at).first<kPrefix>())) continue;
        if (bytes[at] != 0 || zerosTurnedDown_ == 0) break;
        const std::size_t zeros = leadingZeros(bytes.subspan(at, end - at));
        if (zeros < zerosTurnedDown_) break;
        at += zeros - zerosTurnedDown_;
    }
    return position + static_cast<std::int64_t>(at);
}

}  // namespace ZkMobileBackup::engine
