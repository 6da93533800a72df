#include <algorithm>
#include <unordered_map>

#include "base/Value.h"

namespace ZkMobileBackup {

namespace {

// Up to here comparing the keys one by one is as fast as hashing, and the index costs nothing.
constexpr std::size_t kLinearSearchLimit = 24;
constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

}  // namespace

class Dictionary::Keys {
public:
    std::size_t size() const { return names_.size(); }
    const std::string& at(std::size_t position) const { return names_[position]; }

    std::size_t find(std::string_view key) const {
        if (names_.size() > kLinearSearchLimit) {
            const auto found = index_.find(key);
            return found != index_.end() ? found->second : kNotFound;
        }
        for (std::size_t i = 0; i < names_.size(); ++i) {
            if (names_[i] == key) return i;
        }
        return kNotFound;
    }

    void append(std::string_view key) {
        names_.emplace_back(key);
        if (names_.size() == kLinearSearchLimit + 1) {
            rebuildIndex();
        } else if (names_.size() > kLinearSearchLimit) {
            index_.emplace(key, names_.size() - 1);
        }
    }

    void erase(std::size_t position) {
        names_.erase(names_.begin() + static_cast<std::ptrdiff_t>(position));
        rebuildIndex();
    }

private:
    void rebuildIndex() {
        index_.clear();
        if (names_.size() <= kLinearSearchLimit) return;
        for (std::size_t i = 0; i < names_.size(); ++i) index_.emplace(names_[i], i);
    }

    std::vector<std::string> names_;
    std::unordered_map<std::string, std::size_t, TextHash, std::equal_to<>> index_;
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
