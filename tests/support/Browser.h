#pragma once

#include <string>

namespace ZkMobileBackup {

/// A page as headless Chromium understands it: its elements and texts after loading, written as HTML.
/// Throws std::runtime_error, with what the browser printed, when it fails.
std::string domOf(const std::string& page);

}  // namespace ZkMobileBackup
