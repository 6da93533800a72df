#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ZkMobileBackup {

/// The traditional encryption of zip archives: weak by today's measure, but known to every zip program. minizip as it
/// is distributed leaves encryption out: it only marks entries as encrypted.
class ZipCipher {
public:
    /// Random bytes, and two of the checksum, that stand encrypted before the content of an entry.
    static constexpr std::size_t kHeaderSize = 12;
    using Header = std::array<std::uint8_t, kHeaderSize>;

    /// Whether the password is a text of ASCII characters alone; programs disagree on the bytes of any other one.
    static bool canUse(const std::string& password);

    /// The password ends at its first NUL.
    explicit ZipCipher(const std::string& password);

    /// Each continues where the call before ended.
    void encrypt(std::span<std::uint8_t> bytes);
    void decrypt(std::span<std::uint8_t> bytes);

private:
    std::uint8_t mask() const;
    void update(std::uint8_t plainByte);

    std::array<std::uint32_t, 3> keys_ = {0x12345678, 0x23456789, 0x34567890};
};

}  // namespace ZkMobileBackup
