#include <algorithm>
#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <openssl/evp.h>
#include <string>
#include <vector>

#include "ZkMobileBackup/backup/Sha1.h"

namespace ZkMobileBackup {
namespace {

using Digest = std::array<std::uint8_t, SHA1HashSize>;

const std::uint8_t* pointerTo(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

Digest digestOfPieces(const std::string& message, std::size_t pieceLength) {
    SHA1Context context;
    Digest digest{};
    EXPECT_EQ(SHA1Reset(&context), shaSuccess);
    for (std::size_t i = 0; i < message.size(); i += pieceLength) {
        const std::string piece = message.substr(i, pieceLength);
        EXPECT_EQ(SHA1Input(&context, pointerTo(piece), static_cast<unsigned>(piece.size())), shaSuccess);
    }
    EXPECT_EQ(SHA1Result(&context, digest.data()), shaSuccess);
    return digest;
}

Digest digestOfLibcrypto(const std::string& message) {
    Digest digest{};
    unsigned length = 0;
    EXPECT_EQ(EVP_Digest(message.data(), message.size(), digest.data(), &length, EVP_sha1(), nullptr), 1);
    return digest;
}

std::string patternOf(std::size_t length) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += static_cast<char>(i * 7 + i / 251);
    return text;
}

TEST(Sha1, DigestOfAbcIsThatOfTheStandard) {
    const Digest expected = {0xA9, 0x99, 0x3E, 0x36, 0x47, 0x06, 0x81, 0x6A, 0xBA, 0x3E,
                             0x25, 0x71, 0x78, 0x50, 0xC2, 0x6C, 0x9C, 0xD0, 0xD8, 0x9D};
    EXPECT_EQ(digestOfPieces("abc", 3), expected);
}

TEST(Sha1, DigestOfNothingIsThatOfTheStandard) {
    const Digest expected = {0xDA, 0x39, 0xA3, 0xEE, 0x5E, 0x6B, 0x4B, 0x0D, 0x32, 0x55,
                             0xBF, 0xEF, 0x95, 0x60, 0x18, 0x90, 0xAF, 0xD8, 0x07, 0x09};
    EXPECT_EQ(digestOfPieces("", 1), expected);
}

TEST(Sha1, EveryLengthAroundTheBlocksEqualsLibcrypto) {
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::string message = patternOf(length);
        EXPECT_EQ(digestOfPieces(message, length + 1), digestOfLibcrypto(message)) << length;
    }
}

TEST(Sha1, PiecesMakeTheDigestOfTheWhole) {
    const std::string message = patternOf(1000);
    for (const std::size_t pieceLength : {1U, 3U, 63U, 64U, 65U, 500U}) {
        EXPECT_EQ(digestOfPieces(message, pieceLength), digestOfLibcrypto(message)) << pieceLength;
    }
}

TEST(Sha1, SecondResultIsTheSame) {
    SHA1Context context;
    Digest first{};
    Digest second{};
    ASSERT_EQ(SHA1Reset(&context), shaSuccess);
    ASSERT_EQ(SHA1Input(&context, pointerTo("abc"), 3), shaSuccess);
    EXPECT_EQ(SHA1Result(&context, first.data()), shaSuccess);
    EXPECT_EQ(SHA1Result(&context, second.data()), shaSuccess);
    EXPECT_EQ(first, second);
}

TEST(Sha1, StatusCodesHaveTheirPublishedValues) {
    EXPECT_EQ(int{shaSuccess}, 0);
    EXPECT_EQ(int{shaNull}, 1);
    EXPECT_EQ(int{shaInputTooLong}, 2);
    EXPECT_EQ(int{shaStateError}, 3);
}

TEST(Sha1, NullPointersAreTurnedDown) {
    SHA1Context context;
    Digest digest{};
    ASSERT_EQ(SHA1Reset(&context), shaSuccess);
    EXPECT_EQ(SHA1Reset(nullptr), shaNull);
    EXPECT_EQ(SHA1Input(nullptr, digest.data(), 1), shaNull);
    EXPECT_EQ(SHA1Input(&context, nullptr, 1), shaNull);
    EXPECT_EQ(SHA1Result(nullptr, digest.data()), shaNull);
    EXPECT_EQ(SHA1Result(&context, nullptr), shaNull);
}

TEST(Sha1, NoInputIsNoErrorWhateverThePointers) {
    EXPECT_EQ(SHA1Input(nullptr, nullptr, 0), shaSuccess);
}

TEST(Sha1, InputAfterTheResultIsAnErrorUntilTheNextReset) {
    SHA1Context context;
    Digest digest{};
    ASSERT_EQ(SHA1Reset(&context), shaSuccess);
    ASSERT_EQ(SHA1Result(&context, digest.data()), shaSuccess);
    EXPECT_EQ(SHA1Input(&context, pointerTo("a"), 1), shaStateError);
    EXPECT_EQ(SHA1Result(&context, digest.data()), shaStateError);
    EXPECT_EQ(SHA1Reset(&context), shaSuccess);
    EXPECT_EQ(SHA1Input(&context, pointerTo("a"), 1), shaSuccess);
}

TEST(Sha1, MessageOf64BitsOfLengthIsTooLongAndStaysSo) {
    SHA1Context context;
    Digest digest{};
    ASSERT_EQ(SHA1Reset(&context), shaSuccess);
    context.messageLength = (std::uint64_t{1} << 61) - 2;
    EXPECT_EQ(SHA1Input(&context, pointerTo("a"), 1), shaSuccess);
    EXPECT_EQ(SHA1Input(&context, pointerTo("a"), 1), shaInputTooLong);
    EXPECT_EQ(SHA1Input(&context, pointerTo("a"), 1), shaInputTooLong);
    EXPECT_EQ(SHA1Result(&context, digest.data()), shaInputTooLong);
}

}  // namespace
}  // namespace ZkMobileBackup
