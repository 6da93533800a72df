// A zip archive, unpacked with a password into a folder that holds a symbolic link.
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <sys/resource.h>

#include "base/Log.h"
#include "export/ZipArchive.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

namespace fs = std::filesystem;

/// Keeps what a small input can swell to from filling the disk while the object lives.
class SmallFiles {
public:
    SmallFiles() {
        constexpr rlim_t kLargest = 1 << 18;
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{kLargest, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles() { setrlimit(RLIMIT_FSIZE, &before_); }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;

private:
    rlimit before_{};
};

void expectEntries(const std::string& folder, std::ptrdiff_t count) {
    if (std::distance(fs::directory_iterator(folder), fs::directory_iterator()) != count) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    std::signal(SIGXFSZ, SIG_IGN);  // writing beyond the limit is to fail
    setLogSink([](std::string_view) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    const std::string outside = folder.path("outside");
    const std::string destination = folder.path("destination");
    writeBytes(folder.path("archive.zip"), std::span(data, size));
    fs::create_directories(outside);
    fs::create_directories(destination);
    fs::create_directory_symlink(outside, destination + "/link");
    {
        const SmallFiles limit;
        const auto archive = ZipArchive::init();
        archive->UnzipOpenFile(folder.path("archive.zip"), "password");
        archive->UnzipFileTo(destination, true);
    }
    expectEntries(folder.path(), 3);
    expectEntries(outside, 0);
    fs::remove_all(destination);
    return 0;
}
