#include "platform/Process.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

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
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
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
    std::vector<std::string> texts = arguments;
    const SpawnActions actions(workingFolder);
    pid_t child = 0;
    const int error =
        ::posix_spawn(&child, texts.front().c_str(), actions.get(), nullptr, pointersTo(texts).data(), environ);
    if (error != 0) {
        return fmt::format("Cannot start '{}': {}.", texts.front(), std::generic_category().message(error));
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return fmt::format("Lost sight of '{}'.", texts.front());
    }
    return failureOf(texts.front(), status);
}

}  // namespace ZkMobileBackup
