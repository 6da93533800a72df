#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/ByteBuilder.h"

namespace ZkMobileBackup {

/// One file of a backup, as a manifest tells of it.
struct ManifestRecord {
    std::string domain{};
    std::string path{};
    std::string linkTarget{};
    std::string dataHash{};
    std::string unknown1{};
    std::uint16_t mode = 0x81A4;  ///< a regular file that all may read
    std::uint32_t unknown2 = 0;
    std::uint32_t unknown3 = 0;
    std::uint32_t userId = 501;
    std::uint32_t groupId = 501;
    std::uint32_t modified = 0;  ///< times are seconds since 1970
    std::uint32_t accessed = 0;
    std::uint32_t changed = 0;
    std::uint64_t length = 0;
    std::uint8_t flag = 4;
    std::vector<std::pair<std::string, std::string>> properties{};  ///< at most 255
};

/// Makes the bytes of "Manifest.mbdb" and, where a test wants one, of the index "Manifest.mbdx" beside it.
class ManifestBuilder {
public:
    ManifestBuilder();

    /// Appends a record and returns its start offset in the file. Empty texts are written as such: FF FF.
    std::uint32_t add(const ManifestRecord& record);
    /// Appends a record to the manifest, and to the index an entry that gives it its file name: 40 hexadecimal digits.
    std::uint32_t addIndexed(const ManifestRecord& record, std::string_view fileName);
    /// Appends an entry to the index for the record that starts at `startOffset`.
    ManifestBuilder& addToIndex(std::string_view fileName, std::uint32_t startOffset);

    const std::vector<std::uint8_t>& bytes() const { return manifest_.bytes(); }
    const std::vector<std::uint8_t>& indexBytes() const { return index_.bytes(); }

private:
    void appendText(const std::string& text);

    ByteBuilder manifest_;
    ByteBuilder index_;
};

}  // namespace ZkMobileBackup
