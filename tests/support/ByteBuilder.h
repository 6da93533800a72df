#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace ZkMobileBackup {

/// Puts bytes together by hand; numbers are big-endian.
class ByteBuilder {
public:
    ByteBuilder& u8(unsigned value) { return number(value, 1); }
    ByteBuilder& u16(unsigned value) { return number(value, 2); }
    ByteBuilder& u32(std::uint32_t value) { return number(value, 4); }
    ByteBuilder& u64(std::uint64_t value) { return number(value, 8); }
    ByteBuilder& bytes(std::initializer_list<std::uint8_t> values);
    ByteBuilder& bytes(std::span<const std::uint8_t> values);
    ByteBuilder& text(std::string_view text);
    ByteBuilder& fill(std::size_t count, std::uint8_t value = 0);
    /// Fills with zeros up to `offset`; nothing when the bytes reach further already.
    ByteBuilder& padTo(std::size_t offset);

    std::size_t size() const { return bytes_.size(); }
    const std::vector<std::uint8_t>& bytes() const { return bytes_; }

private:
    ByteBuilder& number(std::uint64_t value, int width);

    std::vector<std::uint8_t> bytes_;
};

}  // namespace ZkMobileBackup
