#include "tests/tool/ToolRun.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ChildProcess.h"

namespace ZkMobileBackup {
namespace {

std::string textOf(const std::string& path) {
    const std::vector<std::uint8_t> bytes = readBytes(path);
    return {bytes.begin(), bytes.end()};
}

void setUpEnvironment(const Environment& environment) {
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
}

ToolResult runPrepared(const std::vector<std::string>& arguments, const std::function<void()>& prepare,
                       const char* program = ZKMB_TOOL) {
    const TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0) {
        redirect(STDOUT_FILENO, folder.path("output"));
        redirect(STDERR_FILENO, folder.path("errors"));
        setUpEnvironment({{"TZ", "UTC"}, {"XDG_DATA_HOME", folder.path("data")}, {"ZKMB_PROFILE", ""}});
        prepare();
        become(program, arguments);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, textOf(folder.path("output")), textOf(folder.path("errors"))};
}

/// Leaves a blocked SIGINT waiting for the program that this process becomes.
void pressCtrlC() {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, nullptr);
    raise(SIGINT);
}

}  // namespace

ToolResult runExample(const std::vector<std::string>& arguments) {
    return runPrepared(
        arguments, [] {}, ZKMB_EXAMPLE);
}

ToolResult runTool(const std::vector<std::string>& arguments) {
    return runPrepared(arguments, [] {});
}

ToolResult runInterruptedTool(const std::vector<std::string>& arguments) {
    return runPrepared(arguments, pressCtrlC);
}

ToolResult runToolWithOutput(const std::string& path, const std::vector<std::string>& arguments) {
    return runPrepared(arguments, [&] { redirect(STDOUT_FILENO, path); });
}

ToolResult runToolWith(const Environment& environment, const std::vector<std::string>& arguments) {
    return runPrepared(arguments, [&] { setUpEnvironment(environment); });
}

ToolResult runToolAsNobodyKnown(const Environment& environment, const std::vector<std::string>& arguments) {
    constexpr uid_t kUnknownUser = 54321;
    return runPrepared(arguments, [&] {
        setUpEnvironment(environment);
        // Whoever is looked up in the password entries is the real user; the effective one keeps its rights.
        if (setresuid(kUnknownUser, 0, 0) != 0) _exit(EXIT_FAILURE);
    });
}

}  // namespace ZkMobileBackup
