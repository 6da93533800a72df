#include "tests/tool/PackagedDocument.h"

#include <algorithm>

#include "export/ZipArchive.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {

std::map<std::string, std::vector<std::uint8_t>> partsOf(const std::string& document) {
    const TemporaryFolder folder;
    const auto archive = ZipArchive::init();
    if (!archive->UnzipOpenFile(document) || !archive->UnzipFileTo(folder.path(), true)) return {};
    return folderContent(folder.path());
}

bool anyPartHolds(const std::string& document, const std::string& text) {
    const auto parts = partsOf(document);
    return std::ranges::any_of(
        parts, [&](const auto& part) { return !std::ranges::search(part.second, bytesOf(text)).empty(); });
}

}  // namespace ZkMobileBackup
