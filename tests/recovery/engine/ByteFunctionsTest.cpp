#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "recovery/ByteFunctions.h"

namespace ZkMobileBackup {
namespace {

constexpr std::uint64_t kHuge = std::numeric_limits<std::uint64_t>::max();
constexpr std::array<std::uint8_t, 8> kBytes = {0x12, 0x34, 0xF6, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};

TEST(ConverterNetShort, ReadsBigEndianUnsigned) {
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 8, 0), 0x1234);
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 8, 2), 0xF678);
}

TEST(ConverterNetShort, ReadsUpToTheEndOfTheLengthAndNotBeyond) {
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 4, 2), 0xF678);
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 4, 3), 0);
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 1, 0), 0);
}

TEST(ConverterNetShort, IsZeroForANullBufferAndALengthOfZero) {
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(nullptr, 8, 0), 0);
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 0, 0), 0);
}

TEST(ConverterNetShort, OversizedOffsetDoesNotWrapIntoTheBuffer) {
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 8, kHuge), 0);
    EXPECT_EQ(converterNetShortToLocalShortFromBuff(kBytes.data(), 8, kHuge - 1), 0);
}

TEST(ConverterNetInt32, ReadsBigEndianUnsigned) {
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 8, 0), 0x1234F678U);
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 8, 4), 0x9ABCDEF0U);
}

TEST(ConverterNetInt32, IsZeroWhenItsLastByteLiesPastTheLength) {
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 6, 3), 0U);
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 7, 3), 0x789ABCDEU);
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 3, 0), 0U);
}

TEST(ConverterNetInt32, IsZeroForANullBufferAndALengthOfZero) {
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(nullptr, 8, 0), 0U);
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 0, 0), 0U);
}

TEST(ConverterNetInt32, OversizedOffsetDoesNotWrapIntoTheBuffer) {
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 8, kHuge), 0U);
    EXPECT_EQ(converterNetInt32ToLocalInt32FromBuff(kBytes.data(), 8, kHuge - 3), 0U);
}

TEST(ConverterUnsignedChar, TakesTheByteAsSigned) {
    EXPECT_EQ(converterUnSignedCharToSignedChar(0x00), 0);
    EXPECT_EQ(converterUnSignedCharToSignedChar(0x7F), 127);
    EXPECT_EQ(converterUnSignedCharToSignedChar(0x80), -128);
    EXPECT_EQ(converterUnSignedCharToSignedChar(0xFF), -1);
}

/// What varintDecode told about the whole of some bytes.
struct Decoded {
    std::uint64_t value;
    int result;
    std::ptrdiff_t end;  // from the start
    bool operator==(const Decoded&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Decoded& decoded) {
    return out << "value " << decoded.value << ", result " << decoded.result << ", end " << decoded.end;
}

Decoded decode(const std::vector<std::uint8_t>& bytes) {
    Decoded decoded{99, 99, 99};
    const std::uint8_t* end = nullptr;
    decoded.result = varintDecode(&decoded.value, bytes.data(), &end, bytes.data() + bytes.size());
    decoded.end = end - bytes.data();
    return decoded;
}

TEST(VarintDecode, ReadsOneAndTwoBytesAsTheyWereWritten) {
    EXPECT_EQ(decode({0x00}), (Decoded{0, 1, 1}));
    EXPECT_EQ(decode({0x7F, 0x55}), (Decoded{127, 1, 1}));
    EXPECT_EQ(decode({0x81, 0x01}), (Decoded{129, 2, 2}));
    EXPECT_EQ(decode({0xFF, 0x7F}), (Decoded{16383, 2, 2}));
}

TEST(VarintDecode, ShiftsTheWholeNumberFurtherAtEveryByte) {
    EXPECT_EQ(decode({0x81, 0x81, 0x01}), (Decoded{2113537, 3, 3}));  // 16513 elsewhere
    EXPECT_EQ(decode({0x81, 0x80, 0x80, 0x00}), (Decoded{std::uint64_t{1} << (7 + 14 + 21), 4, 4}));
}

TEST(VarintDecode, HasNoSpecialNinthByte) {
    // Seven bits of the ninth byte, and on it goes for as long as bytes have their high bit set.
    EXPECT_EQ(decode({0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0xFF, 0x01}).result, 10);
    EXPECT_EQ(decode({0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x7F}), (Decoded{0x7F, 9, 9}));
}

TEST(VarintDecode, LosesWhatIsShiftedOut) {
    // The tenth and eleventh byte come with shifts of 63 and 70.
    std::vector<std::uint8_t> ten(10, 0x81);
    ten.back() = 0x02;
    EXPECT_EQ(decode(ten), (Decoded{(std::uint64_t{1} << 63) | 2, 10, 10}));
    std::vector<std::uint8_t> eleven(11, 0xFF);
    eleven.back() = 0x03;
    EXPECT_EQ(decode(eleven), (Decoded{3, 11, 11}));
}

TEST(VarintDecode, NeverReadsTheByteAtTheLimit) {
    const std::array<std::uint8_t, 3> bytes = {0x81, 0x82, 0x05};
    std::uint64_t value = 99;
    const std::uint8_t* end = nullptr;
    EXPECT_EQ(varintDecode(&value, bytes.data(), &end, bytes.data() + 2), 2);
    EXPECT_EQ(value, (1U << 7) | 2U);
    EXPECT_EQ(end, bytes.data() + 3);  // one further than the bytes examined
}

TEST(VarintDecode, TerminatingByteBeforeTheLimitIsNoCut) {
    EXPECT_EQ(decode({0x81, 0x05}).end, 2);
}

TEST(VarintDecode, GivesZeroAndOneFurtherWhenNothingMayBeRead) {
    EXPECT_EQ(decode({}).result, 0);
    const std::array<std::uint8_t, 2> bytes = {0x05, 0x06};
    for (const std::uint8_t* limit : {bytes.data() + 1, bytes.data()}) {
        std::uint64_t value = 99;
        const std::uint8_t* end = nullptr;
        EXPECT_EQ(varintDecode(&value, bytes.data() + 1, &end, limit), 0);
        EXPECT_EQ(value, 0U);
        EXPECT_EQ(end, bytes.data() + 2);
    }
}

TEST(VarintDecode, WritesNothingWithoutAStartOrALimit) {
    std::uint64_t value = 99;
    const std::uint8_t* end = kBytes.data();
    EXPECT_EQ(varintDecode(&value, nullptr, &end, kBytes.data()), 0);
    EXPECT_EQ(varintDecode(&value, kBytes.data(), &end, nullptr), 0);
    EXPECT_EQ(value, 99U);
    EXPECT_EQ(end, kBytes.data());
}

TEST(VarintDecode, NeedsNoOutEnd) {
    std::uint64_t value = 99;
    EXPECT_EQ(varintDecode(&value, kBytes.data(), nullptr, kBytes.data() + 1), 1);
    EXPECT_EQ(value, 0x12U);
}

TEST(VarintDecode, GivesTheFullResultOfALongRun) {
    std::vector<std::uint8_t> run(1000, 0x80);
    run.push_back(0x07);
    EXPECT_EQ(decode(run), (Decoded{7, 1001, 1001}));
}

}  // namespace
}  // namespace ZkMobileBackup
