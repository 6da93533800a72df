#pragma once

#include <string>

namespace ZkMobileBackup {

// The file that this code is in: the shared library, or the program that it is built into. Any thread.

/// The folder of that file as it was when the file was loaded, with links followed; empty when unknown.
const std::string& ownFolder();

/// The folder of what belongs to that file: `installed`, relative to its folder, where there is such a folder; else, for
/// a file that stands where it was built, `built`, relative to the build folder. Empty when neither is known.
std::string companionFolder(const std::string& installed, const std::string& built);

}  // namespace ZkMobileBackup
