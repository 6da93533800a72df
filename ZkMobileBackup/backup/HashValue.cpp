#include "ZkMobileBackup/backup/HashValue.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "ZkMobileBackup/backup/Sha1.h"
#include "ZkMobileBackup/backup/manifest_fields.h"

namespace ZkMobileBackup {

namespace {

constexpr std::string_view kUpperCaseDigits = "0123456789ABCDEF";

int inputText(SHA1Context& context, std::string_view text) {
    constexpr std::size_t kLargestPiece = std::numeric_limits<unsigned int>::max();
    int status = shaSuccess;
    while (status == shaSuccess && !text.empty()) {
        const std::size_t length = std::min(text.size(), kLargestPiece);
        status =
            SHA1Input(&context, reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<unsigned int>(length));
        text.remove_prefix(length);
    }
    return status;
}

}  // namespace

std::optional<std::string> HashValue::getHashValue(std::string_view text) {
    SHA1Context context;
    std::array<std::uint8_t, SHA1HashSize> digest;
    if (SHA1Reset(&context) != shaSuccess) return std::nullopt;
    if (const int status = inputText(context, text); status != shaSuccess) {
        std::fprintf(stderr, "SHA1Input Error %d.\n", status);
        return std::nullopt;
    }
    if (SHA1Result(&context, digest.data()) != shaSuccess) return std::nullopt;
    return hexadecimal(digest, kUpperCaseDigits);
}

}  // namespace ZkMobileBackup
