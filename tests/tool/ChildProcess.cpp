#include "tests/tool/ChildProcess.h"

#include <fcntl.h>
#include <unistd.h>

namespace ZkMobileBackup {

void redirect(int descriptor, const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) _exit(127);
}

void become(std::string program, std::vector<std::string> arguments) {
    std::vector<char*> argv{program.data()};
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
}

}  // namespace ZkMobileBackup
