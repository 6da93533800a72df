#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZkMobileBackup {

/// An entry as it stands in an archive, right or wrong.
struct ZipBuilderEntry {
    std::string name;
    std::string storedBytes{};
    unsigned method = 0;  ///< 0 stored, 8 deflated
    unsigned flags = 0;
    std::uint32_t dosDate = 0x5AA1'6000;  ///< 2025-05-01 12:00:00
    std::uint32_t checksum = 0;
    std::optional<std::uint32_t> claimedSize{};        ///< of the content; else the number of stored bytes
    std::optional<std::uint16_t> claimedNameLength{};  ///< else that of the name
};

/// Puts zip archives together by hand, for entries that no program writes.
class ZipBuilder {
public:
    ZipBuilder& add(const ZipBuilderEntry& entry);
    ZipBuilder& addFile(std::string_view name, std::string_view content);

    std::size_t entryCount() const { return count_; }
    /// Where the record of the last entry begins within the directory at the end of the archive.
    std::size_t lastRecord() const { return files_.size() + lastRecord_; }
    std::string bytes() const;

private:
    std::string files_;
    std::string directory_;
    std::size_t count_ = 0;
    std::size_t lastRecord_ = 0;
};

std::uint32_t zipChecksum(std::string_view content);
/// The bytes of a deflated entry with this content.
std::string deflated(std::string_view content);

}  // namespace ZkMobileBackup
