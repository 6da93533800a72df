#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "recovery/engine/byte_image.h"
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

    struct Match {
        bool accepted = false;
        std::uint16_t length = 0;  ///< an upper bound of the record's length, cut to 16 bits
        bool allNull = false;      ///< every column passed with the serial type 0
    };
    /// Tests the bytes at `position`; `dbEnd` is the position of the image's last byte.
    Match matchAt(const ByteImage& image, std::int64_t position, std::int64_t dbEnd) const;
    /// The first position from `position` up to `bound` that a quick look does not turn down; `bound` for none.
    std::int64_t nextPossibleMatch(const ByteImage& image, std::int64_t position, std::int64_t bound,
                                   std::int64_t dbEnd) const;

private:
    /// What the first byte of a serial type says of a column's test; bits, so that tests can be joined without branches.
    enum ByteVerdict : std::uint8_t {
        kTurnedDown = 0,
        kPasses = 1,         ///< the byte is the whole serial type, and passes
        kUndecided = 1 | 2,  ///< the serial type goes on
    };
    using ByteVerdicts = std::array<std::uint8_t, 256>;

    /// What one column demands of a serial type.
    class ColumnTest {
    public:
        explicit ColumnTest(const ColumnType& type);
        bool accepts(std::int32_t serialType) const;
        const ByteVerdicts& verdicts() const { return verdicts_; }

    private:
        std::int64_t code_;
        bool hasDefault_;
        std::int64_t defaultInteger_ = 0;
        double defaultFloat_ = 0;
        ByteVerdicts verdicts_{};
    };

    static constexpr std::size_t kPrefix = 4;

    std::size_t zerosTurnedDown() const;
    bool prefixMayMatch(std::span<const std::uint8_t, kPrefix> bytes) const;

    bool hasColumnTypes_;
    std::vector<ColumnTest> tests_;
    // Verdicts of the first tests, all passing where there are fewer: nearly every position is turned down by these.
    std::array<ByteVerdicts, kPrefix> prefix_{};
    // So many zero bytes in a row are no match, 0 when any number may be one: free space is mostly zeros.
    std::size_t zerosTurnedDown_;
};

}  // namespace ZkMobileBackup::engine
