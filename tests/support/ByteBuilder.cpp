#include "tests/support/ByteBuilder.h"

namespace ZkMobileBackup {

ByteBuilder& ByteBuilder::number(std::uint64_t value, int width) {
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) {
        bytes_.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return *this;
}

ByteBuilder& ByteBuilder::bytes(std::initializer_list<std::uint8_t> values) {
    bytes_.insert(bytes_.end(), values);
    return *this;
}

ByteBuilder& ByteBuilder::bytes(std::span<const std::uint8_t> values) {
    bytes_.insert(bytes_.end(), values.begin(), values.end());
    return *this;
}

ByteBuilder& ByteBuilder::text(std::string_view text) {
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    return *this;
}

ByteBuilder& ByteBuilder::fill(std::size_t count, std::uint8_t value) {
    bytes_.insert(bytes_.end(), count, value);
    return *this;
}

ByteBuilder& ByteBuilder::padTo(std::size_t offset) {
    if (offset > bytes_.size()) bytes_.resize(offset);
    return *this;
}

}  // namespace ZkMobileBackup
