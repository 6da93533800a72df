#include "tests/support/ZipBuilder.h"

#include <algorithm>
#include <stdexcept>
#include <zlib.h>

namespace ZkMobileBackup {

namespace {

std::string little(std::size_t value, int width) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
    return bytes;
}

/// The fields that stand both before the content and in the directory.
std::string commonFields(const ZipBuilderEntry& entry) {
    constexpr std::size_t kVersionNeeded = 20;
    return little(kVersionNeeded, 2) + little(entry.flags, 2) + little(entry.method, 2) + little(entry.dosDate, 4) +
           little(entry.checksum, 4) + little(entry.storedBytes.size(), 4) +
           little(entry.claimedSize.value_or(static_cast<std::uint32_t>(entry.storedBytes.size())), 4) +
           little(entry.claimedNameLength.value_or(static_cast<std::uint16_t>(entry.name.size())), 2) + little(0, 2);
}

}  // namespace

ZipBuilder& ZipBuilder::add(const ZipBuilderEntry& entry) {
    constexpr std::size_t kVersionMadeBy = 20;
    const std::size_t offset = files_.size();
    files_ += "PK\x03\x04" + commonFields(entry) + entry.name + entry.storedBytes;
    lastRecord_ = directory_.size();
    // No comment, first disk, no attributes.
    directory_ += "PK\x01\x02" + little(kVersionMadeBy, 2) + commonFields(entry) + std::string(10, '\0') +
                  little(offset, 4) + entry.name;
    ++count_;
    return *this;
}

ZipBuilder& ZipBuilder::addFile(std::string_view name, std::string_view content) {
    return add({.name = std::string(name), .storedBytes = std::string(content), .checksum = zipChecksum(content)});
}

std::string ZipBuilder::bytes() const {
    return files_ + directory_ + "PK\x05\x06" + little(0, 4) + little(count_, 2) + little(count_, 2) +
           little(directory_.size(), 4) + little(files_.size(), 4) + little(0, 2);
}

std::uint32_t zipChecksum(std::string_view content) {
    const auto* bytes = reinterpret_cast<const Bytef*>(content.data());
    return static_cast<std::uint32_t>(crc32(0, bytes, static_cast<uInt>(content.size())));
}

std::string deflated(std::string_view content) {
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY);
    std::string output(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(output.data());
    stream.avail_out = static_cast<uInt>(output.size());
    const int result = deflate(&stream, Z_FINISH);
    output.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw std::runtime_error("deflate failed");
    return output;
}

}  // namespace ZkMobileBackup
