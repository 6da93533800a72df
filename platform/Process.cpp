#include "platform/Process.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

/// What a program starts with: no input, no output, and its folder.
class SpawnActions {
public:
    explicit SpawnActions(const std::string& workingFolder) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        if (!workingFolder.empty()) ::posix_spawn_file_actions_addchdir_np(&actions_, workingFolder.c_str());
    }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// From these the zip program takes options that the user likes: they could leave folders out of a document.
constexpr std::string_view kOptionVariables[] = {"ZIPOPT=", "ZIP="};

/// The variables of this process that a program gets.
std::vector<char*> inheritedVariables() {
    std::vector<char*> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        const auto isSetHere = [variable](std::string_view name) {
            return std::string_view(*variable).starts_with(name);
        };
        if (std::ranges::none_of(kOptionVariables, isSetHere)) variables.push_back(*variable);
    }
    variables.push_back(nullptr);
    return variables;
}

/// Returns 0 or a value of errno.
int start(std::vector<std::string> arguments, const SpawnActions& actions, pid_t& child) {
    return ::posix_spawn(&child, arguments.front().c_str(), actions.get(), nullptr, pointersTo(arguments).data(),
                         inheritedVariables().data());
}

/// The shell with a script and its arguments.
std::vector<std::string> readByShell(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"/bin/sh", "--"});
    return arguments;
}

/// The exit status of a shell script one of whose programs is not there.
constexpr int kCommandNotFound = 127;

std::string failureOf(const std::string& program, int waitStatus) {
    if (WIFEXITED(waitStatus)) {
        const int status = WEXITSTATUS(waitStatus);
        if (status == 0) return "";
        if (status == kCommandNotFound)
            return fmt::format("'{}' failed: a program that it starts is missing.", program);
        return fmt::format("'{}' failed with status {}.", program, status);
    }
    return fmt::format("'{}' was ended by signal {}.", program, WTERMSIG(waitStatus));
}

}  // namespace

std::string runProgram(const std::vector<std::string>& arguments, const std::string& workingFolder) {
    const std::string& program = arguments.front();
    const SpawnActions actions(workingFolder);
    pid_t child = 0;
    int error = start(arguments, actions, child);
    if (error == ENOEXEC) error = start(readByShell(arguments), actions, child);  // it does not say "#!"
    if (error != 0) return fmt::format("Cannot start '{}': {}.", program, textOfError(error));
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno == ECHILD) return "";  // a host that ignores its children's ends is not told how this one ended
        if (errno != EINTR) return fmt::format("Lost sight of '{}'.", program);
    }
    return failureOf(program, status);
}

}  // namespace ZkMobileBackup
