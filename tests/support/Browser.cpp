#include "tests/support/Browser.h"

#include <stdexcept>

#include "tests/support/CommandRun.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

constexpr const char* kBrowser =
    "/usr/bin/chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
    "--disable-background-networking --disable-component-update --disable-sync --disable-dev-shm-usage";

}  // namespace

std::string domOf(const std::string& page) {
    const TemporaryFolder profile;
    const CommandRun browser = runCommand(std::string(kBrowser) + " --user-data-dir='" + profile.path() +
                                          "' --dump-dom 'file://" + page + "' 2>'" + profile.path("log") + "'");
    if (browser.status == 0) return browser.output;
    const auto log = readBytes(profile.path("log"));
    throw std::runtime_error(std::string(log.begin(), log.end()));
}

}  // namespace ZkMobileBackup
