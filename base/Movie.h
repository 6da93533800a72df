#pragma once

#include <cstdint>
#include <memory>

#include "base/Api.h"

namespace ZkMobileBackup {

class Image;

/// A movie file of a backup: a small handle; the file is not kept open. All methods may be called from any thread.
class ZKMB_API Movie {
public:
    virtual ~Movie();
    Movie(const Movie&) = delete;
    Movie& operator=(const Movie&) = delete;

    /// Length in the movie's own units, as its movie header has it. A file without one gives its container's length in
    /// the container's units. 0 when there is none.
    virtual std::int64_t duration() const = 0;
    /// Units of the duration in a second; 0 when unknown.
    virtual std::int64_t timeScale() const = 0;
    /// The picture that is shown first, upright; null for a movie without pictures.
    virtual std::shared_ptr<const Image> posterImage() const = 0;

protected:
    Movie() = default;
};

}  // namespace ZkMobileBackup
