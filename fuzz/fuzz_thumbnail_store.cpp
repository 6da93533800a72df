// A thumbnail store and the pixels of the bitmaps that are made of it. The input's first byte chooses the store's name,
// the rest is the file.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"
#include "base/Image.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

constexpr std::array<const char*, 5> kNames{"3303.ithmb", "3309.ithmb", "3319.ithmb", "4031.ithmb", "other.ithmb"};

void lookAt(const ZkMobileBackupAppDomainRecord& record) {
    const Image& image = **record.recordValueForKey(kPhotoRecordThumbnail)->image();
    const auto pixels = image.pixels();
    if (!pixels || !record.isDeleted()) std::abort();
    const auto count = static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height());
    if (pixels->rgba.size() != count * 4) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    static const TemporaryFolder folder;
    const std::string path = folder.path("store");
    writeBytes(path, std::span(data, size).subspan(1));

    const auto domain = ZkMobileBackupPhotoDomain::init();
    domain->_reset_head({{kThumbnailStoreNameKey, kNames[data[0] % kNames.size()]}});
    domain->_read_ithmb_file(path.c_str());
    for (const auto& record : domain->records()) lookAt(*record);
    return 0;
}
