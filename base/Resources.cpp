#include "base/Resources.h"

#include <dlfcn.h>
#include <filesystem>
#include <mutex>
#include <utility>

namespace ZkMobileBackup {

namespace {

struct Folder {
    std::mutex mutex;
    std::string path;  // guarded by mutex
};

Folder& chosenFolder() {
    static Folder& instance = *new Folder;  // never destroyed: jobs may still ask while the process ends
    return instance;
}

std::string canonical(const char* path) {
    std::error_code error;
    return std::filesystem::weakly_canonical(path, error).string();
}

/// Whether this function's file, the library or the program it is built into, stands where it was built. A build folder
/// that cannot be looked at is none: whoever built the library may have it for themselves.
bool runsFromBuildFolder() noexcept {
    Dl_info info;
    if (::dladdr(reinterpret_cast<const void*>(&resourceFolder), &info) == 0 || info.dli_fname == nullptr) return false;
    const std::string buildFolder = canonical(ZKMB_BUILD_FOLDER);
    return !buildFolder.empty() && canonical(info.dli_fname).starts_with(buildFolder + "/");
}

/// Found out while the file is loaded: its path may be relative to the working folder of that time.
const bool kRunsFromBuildFolder = runsFromBuildFolder();

}  // namespace

std::string resourceFolder() {
    {
        const std::lock_guard lock(chosenFolder().mutex);
        if (!chosenFolder().path.empty()) return chosenFolder().path;
    }
    return kRunsFromBuildFolder ? ZKMB_BUILD_FOLDER "/share/zkmobilebackup" : ZKMB_INSTALLED_RESOURCES;
}

void setResourceFolder(std::string path) {
    const std::lock_guard lock(chosenFolder().mutex);
    chosenFolder().path = std::move(path);
}

}  // namespace ZkMobileBackup
