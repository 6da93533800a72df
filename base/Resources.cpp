#include "base/Resources.h"

#include <mutex>
#include <utility>

#include "base/OwnFile.h"

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

}  // namespace

std::string resourceFolder() {
    {
        const std::lock_guard lock(chosenFolder().mutex);
        if (!chosenFolder().path.empty()) return chosenFolder().path;
    }
    return companionFolder(ZKMB_INSTALLED_RESOURCES, "share/zkmobilebackup");
}

void setResourceFolder(std::string path) {
    const std::lock_guard lock(chosenFolder().mutex);
    chosenFolder().path = std::move(path);
}

}  // namespace ZkMobileBackup
