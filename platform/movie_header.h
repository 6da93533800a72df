#pragma once

#include <cstdint>
#include <optional>

#include "platform/codecs/ByteSource.h"

namespace ZkMobileBackup {

/// Two numbers of a movie's header, as they stand there.
struct MovieHeader {
    std::int64_t duration = 0;   ///< length in units of the time scale; 0 when the header does not know it
    std::int64_t timeScale = 0;  ///< units in a second
};

/// Finds the movie header ("mvhd" in "moov") in a file that consists of boxes. Nothing without one, or when it is cut
/// short. Reads box headers only, wherever the movie's boxes stand, and no more than a limited number of them.
std::optional<MovieHeader> readMovieHeader(const ByteSource& file);

}  // namespace ZkMobileBackup
