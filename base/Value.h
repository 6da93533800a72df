#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "base/Api.h"
#include "base/CopyOnWrite.h"

namespace ZkMobileBackup {

class Image;
class Value;

/// An ordered list of values.
using Array = std::vector<Value>;

/// The bytes of a file, shared and never changed.
using SharedBytes = std::shared_ptr<const std::vector<std::uint8_t>>;

/// An instant: seconds since 1970-01-01 00:00:00 UTC, negative before.
struct Date {
    double secondsSince1970 = 0;
    bool operator==(const Date&) const = default;
};

/// An extent in pixels.
struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

/// A dictionary from texts to values that keeps the order in which its keys were first set: that order is its order of
/// enumeration everywhere. Copies are cheap: they share their content until one of them is changed, and after a
/// change of values alone still their keys. Look-ups take constant time.
class ZKMB_API Dictionary {
public:
    Dictionary();
    Dictionary(std::initializer_list<std::pair<std::string_view, Value>> entries);
    Dictionary(const Dictionary& other);
    Dictionary(Dictionary&& other) noexcept;
    Dictionary& operator=(const Dictionary& other);
    Dictionary& operator=(Dictionary&& other) noexcept;
    ~Dictionary();

    std::size_t size() const;
    bool empty() const { return size() == 0; }
    const std::string& keyAt(std::size_t position) const;
    const Value& valueAt(std::size_t position) const;

    /// The value of `key`, null where the dictionary lacks the key. Valid until the dictionary is changed.
    const Value* find(std::string_view key) const;
    bool contains(std::string_view key) const { return find(key) != nullptr; }
    /// The text of `key`, null where the key is missing or its value is no text.
    const std::string* text(std::string_view key) const;

    /// Makes room for so many entries, so that setting them moves none.
    void reserve(std::size_t entries);
    /// Sets a value. A key that exists keeps its place, a new one goes to the end.
    void set(std::string_view key, Value value);
    void setValueAt(std::size_t position, Value value);
    /// Removes a key; without it nothing happens.
    void remove(std::string_view key);
    /// Sets every entry of `other`, in its order.
    void merge(const Dictionary& other);

    bool operator==(const Dictionary& other) const;

private:
    class Keys;
    struct Content;
    CopyOnWrite<Content> content_;
};

/// One of: nothing, text, whole number, floating number, date, bytes, image, size, array, dictionary.
class ZKMB_API Value {
public:
    Value() = default;
    Value(std::string text) : data_(std::move(text)) {}
    Value(std::string_view text) : data_(std::string(text)) {}
    Value(const char* text) : data_(std::string(text)) {}
    template <typename Integer>
    requires(std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>) Value(Integer number)
        : data_(static_cast<std::int64_t>(number)) {}
    Value(double number) : data_(number) {}
    Value(bool) = delete;
    Value(Date date) : data_(date) {}
    Value(Size size) : data_(size) {}
    Value(SharedBytes bytes) : data_(std::move(bytes)) {}
    Value(std::shared_ptr<const Image> image) : data_(std::move(image)) {}
    Value(Array array);
    Value(Dictionary dictionary) : data_(std::move(dictionary)) {}

    bool isNull() const { return std::holds_alternative<std::monostate>(data_); }

    // Each returns null when the value is of another kind.
    const std::string* text() const { return std::get_if<std::string>(&data_); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&data_); }
    const double* floating() const { return std::get_if<double>(&data_); }
    const Date* date() const { return std::get_if<Date>(&data_); }
    const Size* size() const { return std::get_if<Size>(&data_); }
    const SharedBytes* bytes() const { return std::get_if<SharedBytes>(&data_); }
    const std::shared_ptr<const Image>* image() const { return std::get_if<std::shared_ptr<const Image>>(&data_); }
    const Array* array() const;
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&data_); }

    /// A whole or floating number as a double, 0 for any other value.
    double numberOr0() const;

    bool operator==(const Value& other) const;

private:
    std::variant<std::monostate, std::string, std::int64_t, double, Date, Size, SharedBytes,
                 std::shared_ptr<const Image>, CopyOnWrite<Array>, Dictionary>
        data_;
};

}  // namespace ZkMobileBackup
