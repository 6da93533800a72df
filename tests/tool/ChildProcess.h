#pragma once

#include <string>
#include <vector>

namespace ZkMobileBackup {

// For the time between fork and exec, where nothing may fail in another way than by ending the child.

/// Sends what a descriptor takes to a file, which is made if need be.
void redirect(int descriptor, const std::string& path);

/// Turns the process into a run of `program`.
[[noreturn]] void become(std::string program, std::vector<std::string> arguments);

}  // namespace ZkMobileBackup
