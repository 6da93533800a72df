#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {

/// A run of the tool that can be met on its way: it waits where its standard error takes no more bytes, and these are
/// taken at the test's pace.
class WatchedRun {
public:
    enum class Errors {
        Terminal,  ///< takes nothing until the first reading
        Pipe       ///< takes one page ahead of what is read
    };

    WatchedRun(Errors errors, const std::vector<std::string>& arguments);
    ~WatchedRun();
    WatchedRun(const WatchedRun&) = delete;
    WatchedRun& operator=(const WatchedRun&) = delete;

    /// Reads standard error up to a text in it; false when the tool ended without it.
    bool readUntil(const std::string& text);
    /// Presses Ctrl-C once the tool listens to it, and waits until it has heard.
    void pressCtrlC();
    /// Presses Ctrl-C, whoever listens, and waits for the end. The signal that ended the tool, 0 for none.
    int pressCtrlCToTheEnd();
    /// Reads the rest and waits for the end. To be called once.
    ToolResult finish();

private:
    bool readSome();
    bool listensToCtrlC() const;
    bool hasEnded() const;
    int waitForEnd();

    TemporaryFolder folder_;
    int readEnd_ = -1;
    int writeEnd_ = -1;  // open as long as the terminal is held
    pid_t child_ = 0;
    std::string errors_;
};

}  // namespace ZkMobileBackup
