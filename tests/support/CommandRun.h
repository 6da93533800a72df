#pragma once

#include <array>
#include <cstdio>
#include <string>

namespace ZkMobileBackup {

/// What became of a command.
struct CommandRun {
    int status = -1;  ///< 0 on success
    std::string output;
};

/// Runs a command line in a shell.
inline CommandRun runCommand(const std::string& command) {
    CommandRun run;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    std::array<char, 4096> buffer{};
    while (const std::size_t read = fread(buffer.data(), 1, buffer.size(), pipe)) {
        run.output.append(buffer.data(), read);
    }
    run.status = pclose(pipe);
    return run;
}

}  // namespace ZkMobileBackup
