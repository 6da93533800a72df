#pragma once

#include <string>
#include <vector>

namespace ZkMobileBackup {

/// Runs a program to its end: `arguments` begin with its path. It is started directly, so that no shell reads the
/// arguments, in `workingFolder` where that is not empty, without input, and its output is dropped. A script that does
/// not name its interpreter is run by the shell. The user's own options of the zip program are kept from it. Returns an
/// empty text when it ended with status 0, else the reason of the failure. Any thread.
std::string runProgram(const std::vector<std::string>& arguments, const std::string& workingFolder = {});

}  // namespace ZkMobileBackup
