// The manifest of a backup and its index. The input's first two bytes give the length of what follows the magic text of
// the manifest; the rest follows that of the index. Without a rest there is no index.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>

#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"
#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

void writeBackup(const std::string& folder, std::span<const std::uint8_t> manifest,
                 std::span<const std::uint8_t> index) {
    const std::string indexPath = folder + "/Manifest.mbdx";
    writeBytes(folder + "/Manifest.mbdb", ByteBuilder().text("mbdb").bytes(manifest).bytes());
    std::filesystem::remove(indexPath);
    if (!index.empty()) writeBytes(indexPath, ByteBuilder().text("mbdx").bytes(index).bytes());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    static const TemporaryFolder folder;
    const auto input = std::span(data, size).subspan(2);
    const std::size_t length = std::min<std::size_t>(data[0] * 256U + data[1], input.size());
    writeBackup(folder.path(), input.first(length), input.subspan(length));

    const auto snapshot = ZkDeviceBackupSnapshot::initWithUDID({}, {}, {}, 0, {}, folder.path());
    const auto manifest = ZkMbdbFileParser::fileListFromMbdb(*snapshot);
    if (!manifest) std::abort();
    for (const auto& [offset, record] : *manifest) {
        if (record.text("fileID") == nullptr) std::abort();
    }
    return 0;
}
