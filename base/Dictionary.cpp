#include <bit>

#include "base/KeyedHash.h"
#include "base/Value.h"

namespace ZkMobileBackup {

namespace {

// Up to here comparing the keys one by one is as fast as hashing, and the index costs nothing.
constexpr std::size_t kLinearSearchLimit = 24;
constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

/// An entry of a hash table that leads to a key. It is kept this small because large dictionaries are as fast as the
/// cache lets their table be.
struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = 0;  ///< the key's position + 1; 0 for a free slot
};

std::uint32_t hashOf(std::string_view key) {
    return static_cast<std::uint32_t>(keyedHash(key));
}

}  // namespace

class Dictionary::Keys {
public:
    std::size_t size() const { return names_.size(); }
    const std::string& at(std::size_t position) const { return names_[position]; }

    std::size_t find(std::string_view key) const { return slots_.empty() ? foundByLooking(key) : foundByHash(key); }

    void reserve(std::size_t count) {
        names_.reserve(count);
        if (count > kLinearSearchLimit && count > slots_.size() / 2) rebuildSlots(count);
    }

    void append(std::string_view key) {
        names_.emplace_back(key);
        if (names_.size() <= kLinearSearchLimit && slots_.empty()) return;
        if (names_.size() > slots_.size() / 2) {
            rebuildSlots(names_.size());
        } else {
            fillSlot(names_.size() - 1);
        }
    }

    void erase(std::size_t position) {
        names_.erase(names_.begin() + static_cast<std::ptrdiff_t>(position));
        rebuildSlots(names_.size());
    }

private:
    std::size_t foundByLooking(std::string_view key) const {
        for (std::size_t i = 0; i < names_.size(); ++i) {
            if (names_[i] == key) return i;
        }
        return kNotFound;
    }

    std::size_t foundByHash(std::string_view key) const {
        const std::uint32_t hash = hashOf(key);
        for (std::size_t i = firstSlot(hash); slots_[i].number != 0; i = slotAfter(i)) {
            if (slots_[i].hash == hash && names_[slots_[i].number - 1] == key) return slots_[i].number - 1;
        }
        return kNotFound;
    }

    /// For `count` keys: no slots for few; else so many that half of them stay free.
    void rebuildSlots(std::size_t count) {
        slots_.clear();
        if (count <= kLinearSearchLimit) return;
        slots_.resize(std::bit_ceil(count) * 2);
        for (std::size_t i = 0; i < names_.size(); ++i) fillSlot(i);
    }

    void fillSlot(std::size_t position) {
        const std::uint32_t hash = hashOf(names_[position]);
        std::size_t slot = firstSlot(hash);
        while (slots_[slot].number != 0) slot = slotAfter(slot);
        slots_[slot] = {hash, static_cast<std::uint32_t>(position + 1)};
    }

    std::size_t firstSlot(std::uint32_t hash) const { return hash & (slots_.size() - 1); }
    std::size_t slotAfter(std::size_t slot) const { return (slot + 1) & (slots_.size() - 1); }

    std::vector<std::string> names_;
    std::vector<Slot> slots_;  // a power of two of them, at least half of them free; none for few keys
};

struct Dictionary::Content {
    CopyOnWrite<Keys> keys;
    std::vector<Value> values;
};

Dictionary::Dictionary() = default;
Dictionary::Dictionary(const Dictionary& other) = default;
Dictionary::Dictionary(Dictionary&& other) noexcept = default;
Dictionary& Dictionary::operator=(const Dictionary& other) = default;
Dictionary& Dictionary::operator=(Dictionary&& other) noexcept = default;
Dictionary::~Dictionary() = default;

Dictionary::Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries) {
    for (const auto& [key, value] : entries) set(key, value);
}

std::size_t Dictionary::size() const {
    return content_->values.size();
}

const std::string& Dictionary::keyAt(std::size_t position) const {
    return content_->keys->at(position);
}

const Value& Dictionary::valueAt(std::size_t position) const {
    return content_->values[position];
}

const Value* Dictionary::find(std::string_view key) const {
    const std::size_t position = content_->keys->find(key);
    return position != kNotFound ? &content_->values[position] : nullptr;
}

const std::string* Dictionary::text(std::string_view key) const {
    const Value* value = find(key);
    return value != nullptr ? value->text() : nullptr;
}

void Dictionary::reserve(std::size_t entries) {
    Content& content = content_.edit();
    content.keys.edit().reserve(entries);
    content.values.reserve(entries);
}

void Dictionary::set(std::string_view key, Value value) {
    Content& content = content_.edit();
    const std::size_t position = content.keys->find(key);
    if (position != kNotFound) {
        content.values[position] = std::move(value);
        return;
    }
    content.keys.edit().append(key);
    content.values.push_back(std::move(value));
}

void Dictionary::setValueAt(std::size_t position, Value value) {
    content_.edit().values[position] = std::move(value);
}

void Dictionary::remove(std::string_view key) {
    const std::size_t position = content_->keys->find(key);
    if (position == kNotFound) return;
    Content& content = content_.edit();
    content.keys.edit().erase(position);
    content.values.erase(content.values.begin() + static_cast<std::ptrdiff_t>(position));
}

void Dictionary::merge(const Dictionary& other) {
    for (std::size_t i = 0; i < other.size(); ++i) set(other.keyAt(i), other.valueAt(i));
}

bool Dictionary::operator==(const Dictionary& other) const {
    if (size() != other.size()) return false;
    for (std::size_t i = 0; i < size(); ++i) {
        if (keyAt(i) != other.keyAt(i) || !(valueAt(i) == other.valueAt(i))) return false;
    }
    return true;
}

}  // namespace ZkMobileBackup
