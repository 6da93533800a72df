#pragma once

#include "base/Api.h"

namespace ZkMobileBackup {

/// A picture that was read from a backup.
class ZKMB_API Image {
public:
    virtual ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    /// Width and height of the upright picture, in pixels.
    virtual int width() const = 0;
    virtual int height() const = 0;

protected:
    Image() = default;
};

}  // namespace ZkMobileBackup
