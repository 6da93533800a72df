#include "tests/support/Browser.h"

#include <array>
#include <cstdio>
#include <stdexcept>

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

constexpr const char* kBrowser =
    "/usr/bin/chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
    "--disable-background-networking --disable-component-update --disable-sync --disable-dev-shm-usage";

struct Run {
    int status = -1;
    std::string output{};
};

Run run(const std::string& command) {
    Run run;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    std::array<char, 4096> buffer{};
    while (const std::size_t read = fread(buffer.data(), 1, buffer.size(), pipe))
        run.output.append(buffer.data(), read);
    run.status = pclose(pipe);
    return run;
}

}  // namespace

std::string domOf(const std::string& page) {
    const TemporaryFolder profile;
    const Run browser = run(std::string(kBrowser) + " --user-data-dir='" + profile.path() + "' --dump-dom 'file://" +
                            page + "' 2>'" + profile.path("log") + "'");
    if (browser.status == 0) return browser.output;
    const auto log = readBytes(profile.path("log"));
    throw std::runtime_error(std::string(log.begin(), log.end()));
}

}  // namespace ZkMobileBackup
