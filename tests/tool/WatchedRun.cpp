#include "tests/tool/WatchedRun.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <pty.h>
#include <stdexcept>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "tests/support/Files.h"
#include "tests/tool/ChildProcess.h"

namespace ZkMobileBackup {
namespace {

constexpr int kSmallestPipe = 4096;

void require(bool success, const char* what) {
    if (!success) throw std::runtime_error(what);
}

/// A terminal that shows bytes as they are and is stopped as by Ctrl-S.
void openTerminal(int& readEnd, int& writeEnd) {
    require(openpty(&readEnd, &writeEnd, nullptr, nullptr, nullptr) == 0, "openpty");
    termios settings{};
    tcgetattr(writeEnd, &settings);
    cfmakeraw(&settings);
    tcsetattr(writeEnd, TCSANOW, &settings);
    require(tcflow(writeEnd, TCOOFF) == 0, "tcflow");
}

void openPipe(int& readEnd, int& writeEnd) {
    std::array<int, 2> ends{};
    require(pipe(ends.data()) == 0, "pipe");
    readEnd = ends[0];
    writeEnd = ends[1];
    require(fcntl(writeEnd, F_SETPIPE_SZ, kSmallestPipe) == kSmallestPipe, "F_SETPIPE_SZ");
}

}  // namespace

WatchedRun::WatchedRun(Errors errors, const std::vector<std::string>& arguments) {
    errors == Errors::Terminal ? openTerminal(readEnd_, writeEnd_) : openPipe(readEnd_, writeEnd_);
    child_ = fork();
    if (child_ == 0) {
        redirect(STDOUT_FILENO, folder_.path("output"));
        dup2(writeEnd_, STDERR_FILENO);
        close(writeEnd_);
        close(readEnd_);
        setenv("TZ", "UTC", 1);
        setenv("XDG_DATA_HOME", folder_.path("data").c_str(), 1);
        become(ZKMB_TOOL, arguments);
    }
}

WatchedRun::~WatchedRun() {
    if (child_ > 0) {
        kill(child_, SIGKILL);
        waitForEnd();
    }
    if (writeEnd_ >= 0) close(writeEnd_);
    close(readEnd_);
}

bool WatchedRun::readUntil(const std::string& text) {
    while (errors_.find(text) == std::string::npos) {
        if (!readSome()) return false;
    }
    return true;
}

void WatchedRun::pressCtrlC() {
    while (!listensToCtrlC() && !hasEnded()) usleep(1000);
    kill(child_, SIGINT);
    while (listensToCtrlC() && !hasEnded()) usleep(1000);
}

int WatchedRun::pressCtrlCToTheEnd() {
    kill(child_, SIGINT);
    const int status = waitForEnd();
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

ToolResult WatchedRun::finish() {
    while (readSome()) {
    }
    const int status = waitForEnd();
    const std::vector<std::uint8_t> output = readBytes(folder_.path("output"));
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, {output.begin(), output.end()}, errors_};
}

/// Returns false once the tool has closed its end.
bool WatchedRun::readSome() {
    if (writeEnd_ >= 0) {
        if (isatty(writeEnd_) == 1) tcflow(writeEnd_, TCOON);
        close(writeEnd_);
        writeEnd_ = -1;
    }
    std::array<char, 64> bytes{};
    const ssize_t count = read(readEnd_, bytes.data(), bytes.size());
    if (count <= 0) return false;
    errors_.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

/// The tool lets go of the signal when it hears it the first time.
bool WatchedRun::listensToCtrlC() const {
    std::ifstream status("/proc/" + std::to_string(child_) + "/status");
    std::string word;
    while (status >> word && word != "SigCgt:") {
    }
    unsigned long long caught = 0;
    status >> std::hex >> caught;
    return ((caught >> (SIGINT - 1)) & 1U) != 0;
}

bool WatchedRun::hasEnded() const {
    siginfo_t info{};
    return waitid(P_PID, static_cast<id_t>(child_), &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == child_;
}

int WatchedRun::waitForEnd() {
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = 0;
    return status;
}

}  // namespace ZkMobileBackup
