#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "recovery/engine/byte_image.h"
#include "recovery/engine/numbers.h"
#include "recovery/engine/serial_types.h"
#include "recovery/model/TableObject.h"

namespace ZkMobileBackup::engine {

/// The run of serial types that a deleted record of a table shows: one test a column, in order.
class ColumnSignature {
public:
    explicit ColumnSignature(const RawTableObject& table);

    /// A table without column types never matches.
    bool hasColumnTypes() const { return hasColumnTypes_; }
    /// Number of serial types that a match reads.
    std::size_t testCount() const { return tests_.size(); }

    // The fields keep apart: packed into a register they would be put together in memory, which waits for its stores.
    struct Match {
        bool accepted = false;
        alignas(std::uint64_t) std::uint16_t length = 0;  ///< upper bound of the record's length, cut to 16 bits
        alignas(std::uint64_t) bool allNull = false;      ///< every column passed with the serial type 0
    };
    /// Tests the bytes at `position`; `dbEnd` is the position of the image's last byte.
    Match matchAt(const ByteImage& image, std::int64_t position, std::int64_t dbEnd) const;
    /// The first position from `position` on and before `bound` that matches; for none the larger of the two.
    std::int64_t nextMatch(const ByteImage& image, std::int64_t position, std::int64_t bound, std::int64_t dbEnd) const;

private:
    /// What one column demands of a serial type.
    class ColumnTest {
    public:
        explicit ColumnTest(const ColumnType& type);
        bool accepts(std::int32_t serialType) const;
        /// The same for a serial type below kFirstLongSerialType.
        bool acceptsSingle(std::uint8_t serialType) const { return acceptsShort_[serialType]; }
        /// The same for the stored number, of which only the low 32 bits count. Those from kFirstLongSerialType on are
        /// all alike in one parity, but for a default that is one of them.
        bool acceptsStored(std::uint64_t stored) const {
            if (stored < kFirstLongSerialType) return acceptsShort_[stored];
            const std::int32_t serialType = signed32(low32(stored));
            if (serialType < kFirstLongSerialType || isNumber()) return accepts(serialType);
            return acceptsShort_[serialType % 2 == 0 ? PayloadCell::kBlob : PayloadCell::kText];
        }

    private:
        /// Whether a default's number is compared with the serial type.
        bool isNumber() const { return code_ == kColumnInteger || code_ == kColumnFloat; }

        std::int64_t code_;
        bool hasDefault_;
        std::int64_t defaultInteger_ = 0;
        double defaultFloat_ = 0;
        std::array<bool, kFirstLongSerialType> acceptsShort_{};
    };

    /// A set of positions on which a match may have begun: bit k stands for the one k bytes back.
    using Starts = std::uint32_t;
    // The quick look takes in so many serial types of a byte each, which passes long runs of zeros over in most tables.
    static constexpr std::size_t kMostQuickTests = 24;
    static constexpr Starts kUndecided = Starts{1} << 31U;

    void prepareQuickLook();
    Match testsAt(const ByteImage& image, std::int64_t position, std::int64_t dbEnd) const;
    bool firstTestFails(std::span<const std::uint8_t> bytes) const;
    std::size_t quickLook(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t end) const;

    bool hasColumnTypes_;
    std::vector<ColumnTest> tests_;
    // By byte: the starts that it leaves possible, and kUndecided for a byte that begins a longer serial type.
    std::array<Starts, 256> possibleStarts_{};
    // The start that has passed every test of the quick look, and kUndecided.
    Starts decided_ = 0;
};

}  // namespace ZkMobileBackup::engine
