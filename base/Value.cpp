#include "base/Value.h"

namespace ZkMobileBackup {

Value::Value(Array array) : data_(CopyOnWrite<Array>(std::move(array))) {}

const Array* Value::array() const {
    const auto* array = std::get_if<CopyOnWrite<Array>>(&data_);
    return array != nullptr ? &array->get() : nullptr;
}

double Value::numberOr0() const {
    if (const auto* whole = integer()) return static_cast<double>(*whole);
    if (const auto* number = floating()) return *number;
    return 0;
}

bool Value::operator==(const Value& other) const {
    if (data_.index() != other.data_.index()) return false;
    if (const Array* mine = array()) return *mine == *other.array();
    if (const Dictionary* mine = dictionary()) return *mine == *other.dictionary();
    if (const auto* mine = text()) return *mine == *other.text();
    if (const auto* mine = integer()) return *mine == *other.integer();
    if (const auto* mine = floating()) return *mine == *other.floating();
    if (const auto* mine = date()) return *mine == *other.date();
    if (const auto* mine = size()) return *mine == *other.size();
    if (const auto* mine = bytes()) {
        const SharedBytes& theirs = *other.bytes();
        return *mine == theirs || (*mine != nullptr && theirs != nullptr && **mine == *theirs);
    }
    if (const auto* mine = image()) return *mine == *other.image();
    return true;
}

}  // namespace ZkMobileBackup
