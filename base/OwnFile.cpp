#include "base/OwnFile.h"

#include <dlfcn.h>
#include <filesystem>

namespace ZkMobileBackup {

namespace {

namespace fs = std::filesystem;

/// Empty for a folder that cannot be looked at: whoever built the library may have it for themselves.
fs::path canonical(const char* path) {
    std::error_code error;
    return fs::weakly_canonical(path, error);
}

fs::path ownFile() noexcept {
    Dl_info info;
    if (::dladdr(reinterpret_cast<const void*>(&ownFolder), &info) == 0 || info.dli_fname == nullptr) return {};
    return canonical(info.dli_fname);
}

bool isInBuildFolder(const fs::path& file) noexcept {
    const fs::path buildFolder = canonical(ZKMB_BUILD_FOLDER);
    return !buildFolder.empty() && file.string().starts_with(buildFolder.string() + "/");
}

struct Place {
    std::string folder;
    bool inBuildFolder = false;
};

Place placeOfOwnFile() noexcept {
    const fs::path file = ownFile();
    return {.folder = file.parent_path().string(), .inBuildFolder = isInBuildFolder(file)};
}

/// Found out while the file is loaded: its path may be relative to the working folder of that time. Never destroyed:
/// jobs may still ask while the process ends.
const Place& kPlace = *new Place(placeOfOwnFile());

}  // namespace

const std::string& ownFolder() {
    return kPlace.folder;
}

std::string companionFolder(const std::string& installed, const std::string& built) {
    const fs::path beside =
        kPlace.folder.empty() ? fs::path() : (fs::path(kPlace.folder) / installed).lexically_normal();
    std::error_code error;
    // An installation may lie within a build folder, as those of tests do.
    return kPlace.inBuildFolder && !fs::is_directory(beside, error) ? ZKMB_BUILD_FOLDER "/" + built : beside.string();
}

}  // namespace ZkMobileBackup
