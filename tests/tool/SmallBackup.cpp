#include "tests/tool/SmallBackup.h"

#include <fmt/format.h>

#include "tests/support/Files.h"

namespace ZkMobileBackup {

SmallBackup::SmallBackup() {
    writeBytes(folder_.path("Manifest.mbdb"), manifest_.bytes());
}

SmallBackup& SmallBackup::add(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    addAlike({path}, bytes);
    return *this;
}

std::string SmallBackup::addAlike(const std::vector<std::string>& paths, const std::vector<std::uint8_t>& bytes) {
    const std::string name = fmt::format("{:040x}", ++files_);
    for (const std::string& path : paths) {
        ManifestRecord record;
        record.domain = "HomeDomain";
        record.path = path;
        manifest_.addIndexed(record, name);
    }
    writeBytes(folder_.path(name), bytes);
    writeBytes(folder_.path("Manifest.mbdb"), manifest_.bytes());
    writeBytes(folder_.path("Manifest.mbdx"), manifest_.indexBytes());
    return folder_.path(name);
}

}  // namespace ZkMobileBackup
