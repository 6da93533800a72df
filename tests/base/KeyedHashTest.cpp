#include <gtest/gtest.h>
#include <set>
#include <string>

#include "base/KeyedHash.h"

namespace ZkMobileBackup {
namespace {

TEST(KeyedHash, IsTheSameForEqualTexts) {
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string text(length, 'a');
        EXPECT_EQ(keyedHash(text), keyedHash(std::string(text)));
    }
}

TEST(KeyedHash, TellsTextsApartThatDifferInLengthOrInAnyByte) {
    std::set<std::uint64_t> hashes;
    std::size_t texts = 0;
    for (std::size_t length = 0; length < 40; ++length) {
        hashes.insert(keyedHash(std::string(length, '\0')));
        ++texts;
        for (std::size_t position = 0; position < length; ++position) {
            std::string text(length, '\0');
            text[position] = '\1';
            hashes.insert(keyedHash(text));
            ++texts;
        }
    }
    EXPECT_EQ(hashes.size(), texts);
}

TEST(KeyedHash, SpreadsOverTheLowBitsByWhichTablesAreIndexed) {
    std::set<std::uint64_t> places;
    constexpr std::uint64_t kMask = (1U << 16U) - 1;
    for (int i = 0; i < 65536; ++i) places.insert(keyedHash("+1555" + std::to_string(i)) & kMask);
    EXPECT_GT(places.size(), 40'000U);  // about 63 in 100 for a hash that is as good as chance
}

}  // namespace
}  // namespace ZkMobileBackup
