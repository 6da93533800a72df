#pragma once

#include <cstddef>

namespace ZkMobileBackup {

// How far a file has come, as fractions of the whole file.
inline constexpr double kSkeletonDone = 0.2;
inline constexpr double kShareOfRows = 0.6;
inline constexpr double kFileDone = 1.0;

/// After row `row` of `count`; row 0 is the header.
inline double fractionOfRows(std::size_t row, std::size_t count) {
    const double quotient = count == 0 ? 0.0 : static_cast<double>(row) / static_cast<double>(count);
    return quotient * kShareOfRows + kSkeletonDone;
}

}  // namespace ZkMobileBackup
