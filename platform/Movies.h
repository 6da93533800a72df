#pragma once

#include <memory>
#include <string>

#include "base/Movie.h"

namespace ZkMobileBackup {

/// The movie in a regular file, opened for reading only; null when it cannot be read or played. Never throws. Any
/// thread.
std::shared_ptr<const Movie> movieOfFile(const std::string& path);

}  // namespace ZkMobileBackup
