#include "base/KeyedHash.h"

#include <bit>
#include <cstring>
#include <random>

namespace ZkMobileBackup {

namespace {

struct Key {
    std::uint64_t low;
    std::uint64_t high;
};

const Key& processKey() {
    static const Key key = [] {
        std::random_device device;
        std::uniform_int_distribution<std::uint64_t> any;
        return Key{any(device), any(device)};
    }();
    return key;
}

class SipState {
public:
    explicit SipState(const Key& key)
        : v0_(key.low ^ 0x736F6D6570736575U),
          v1_(key.high ^ 0x646F72616E646F6DU),
          v2_(key.low ^ 0x6C7967656E657261U),
          v3_(key.high ^ 0x7465646279746573U) {}

    void add(std::uint64_t word) {
        v3_ ^= word;
        round();
        v0_ ^= word;
    }

    std::uint64_t finish() {
        v2_ ^= 0xFF;
        for (int i = 0; i < 3; ++i) round();
        return v0_ ^ v1_ ^ v2_ ^ v3_;
    }

private:
    void round() {
        v0_ += v1_;
        v1_ = std::rotl(v1_, 13) ^ v0_;
        v0_ = std::rotl(v0_, 32);
        v2_ += v3_;
        v3_ = std::rotl(v3_, 16) ^ v2_;
        v0_ += v3_;
        v3_ = std::rotl(v3_, 21) ^ v0_;
        v2_ += v1_;
        v1_ = std::rotl(v1_, 17) ^ v2_;
        v2_ = std::rotl(v2_, 32);
    }

    std::uint64_t v0_;
    std::uint64_t v1_;
    std::uint64_t v2_;
    std::uint64_t v3_;
};

std::uint64_t wordAt(std::string_view text, std::size_t position, std::size_t size) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + position, size);
    return word;
}

}  // namespace

std::uint64_t keyedHash(std::string_view text) {
    constexpr std::size_t kWordSize = sizeof(std::uint64_t);
    SipState state(processKey());
    std::size_t position = 0;
    for (; text.size() - position >= kWordSize; position += kWordSize) state.add(wordAt(text, position, kWordSize));
    const std::size_t rest = text.size() - position;
    const std::uint64_t lastWord = rest > 0 ? wordAt(text, position, rest) : 0;
    state.add(lastWord | std::uint64_t{text.size() & 0xFFU} << 56U);
    return state.finish();
}

}  // namespace ZkMobileBackup
