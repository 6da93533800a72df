#include "tests/support/ManifestBuilder.h"

#include <stdexcept>

namespace ZkMobileBackup {
namespace {

constexpr std::uint32_t kHeaderLength = 6;
constexpr unsigned kVersion = 0x0500;
constexpr unsigned kNoText = 0xFFFF;
constexpr std::size_t kFileNameLength = 40;

}  // namespace

ManifestBuilder::ManifestBuilder() {
    manifest_.text("mbdb").u16(kVersion);
    index_.text("mbdx").u16(kVersion);
}

void ManifestBuilder::appendText(const std::string& text) {
    if (text.empty()) {
        manifest_.u16(kNoText);
    } else {
        manifest_.u16(static_cast<unsigned>(text.size())).text(text);
    }
}

std::uint32_t ManifestBuilder::add(const ManifestRecord& record) {
    const auto start = static_cast<std::uint32_t>(manifest_.size());
    for (const std::string* text :
         {&record.domain, &record.path, &record.linkTarget, &record.dataHash, &record.unknown1}) {
        appendText(*text);
    }
    manifest_.u16(record.mode).u32(record.unknown2).u32(record.unknown3).u32(record.userId).u32(record.groupId);
    manifest_.u32(record.modified).u32(record.accessed).u32(record.changed).u64(record.length).u8(record.flag);
    manifest_.u8(static_cast<unsigned>(record.properties.size()));
    for (const auto& [name, value] : record.properties) {
        appendText(name);
        appendText(value);
    }
    return start;
}

std::uint32_t ManifestBuilder::addIndexed(const ManifestRecord& record, std::string_view fileName) {
    const std::uint32_t start = add(record);
    addToIndex(fileName, start);
    return start;
}

ManifestBuilder& ManifestBuilder::addToIndex(std::string_view fileName, std::uint32_t startOffset) {
    if (fileName.size() != kFileNameLength) throw std::invalid_argument("a file name has 40 digits");
    for (std::size_t i = 0; i < fileName.size(); i += 2) {
        index_.u8(static_cast<unsigned>(std::stoul(std::string(fileName.substr(i, 2)), nullptr, 16)));
    }
    index_.u32(startOffset - kHeaderLength);
    return *this;
}

}  // namespace ZkMobileBackup
