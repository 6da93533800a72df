#include "export/ZipCipher.h"

#include <algorithm>
#include <zlib.h>

namespace ZkMobileBackup {

namespace {

/// One step of CRC-32, without the inversion before and after.
std::uint32_t crcStep(std::uint32_t crc, std::uint32_t byte) {
    constexpr std::uint32_t kLowByte = 0xFF;
    return get_crc_table()[(crc ^ byte) & kLowByte] ^ (crc >> 8);
}

}  // namespace

bool ZipCipher::canUse(const std::string& password) {
    return std::ranges::all_of(password, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

ZipCipher::ZipCipher(const std::string& password) {
    for (const char* c = password.c_str(); *c != '\0'; ++c) update(static_cast<std::uint8_t>(*c));
}

void ZipCipher::encrypt(std::span<std::uint8_t> bytes) {
    for (std::uint8_t& byte : bytes) {
        const std::uint8_t plainByte = byte;
        byte ^= mask();
        update(plainByte);
    }
}

void ZipCipher::decrypt(std::span<std::uint8_t> bytes) {
    for (std::uint8_t& byte : bytes) {
        byte ^= mask();
        update(byte);
    }
}

std::uint8_t ZipCipher::mask() const {
    const std::uint32_t low = (keys_[2] & 0xFFFF) | 2;
    return static_cast<std::uint8_t>((low * (low ^ 1)) >> 8);
}

void ZipCipher::update(std::uint8_t plainByte) {
    keys_[0] = crcStep(keys_[0], plainByte);
    keys_[1] = (keys_[1] + (keys_[0] & 0xFF)) * 134775813 + 1;
    keys_[2] = crcStep(keys_[2], keys_[1] >> 24);
}

}  // namespace ZkMobileBackup
