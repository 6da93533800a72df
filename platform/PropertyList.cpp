#include "platform/PropertyList.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <plist/plist.h>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "platform/Files.h"
#include "platform/property_list_limits.h"

namespace ZkMobileBackup {

namespace {

constexpr std::string_view kBinaryMagic = "bplist";
constexpr double kSecondsFrom1970To2001 = 978307200;  // property lists count from the latter

struct FreePlist {
    void operator()(void* node) const { plist_free(node); }
};
using Plist = std::unique_ptr<void, FreePlist>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Allocated = std::unique_ptr<T, FreeMemory>;

Value valueOf(plist_t node);

/// What is no UTF-8 in a damaged list becomes replacement characters.
std::string wellFormed(std::string_view text) {
    return isValidUtf8(text) ? std::string(text) : toUtf8(toUtf16(text));
}

std::string textOf(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text != nullptr ? wellFormed({text, length}) : "";
}

std::int64_t integerOf(plist_t node) {
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    return static_cast<std::int64_t>(number);  // negative numbers are stored in their two's complement
}

std::int64_t booleanOf(plist_t node) {
    std::uint8_t truth = 0;
    plist_get_bool_val(node, &truth);
    return truth != 0 ? 1 : 0;
}

double realOf(plist_t node) {
    double number = 0;
    plist_get_real_val(node, &number);
    return number;
}

Date dateOf(plist_t node) {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return {kSecondsFrom1970To2001 + seconds + microseconds / 1e6};
}

SharedBytes dataOf(plist_t node) {
    std::uint64_t length = 0;
    const char* data = plist_get_data_ptr(node, &length);
    return std::make_shared<const std::vector<std::uint8_t>>(data, data != nullptr ? data + length : data);
}

Array arrayOf(plist_t node) {
    plist_array_iter position = nullptr;
    plist_array_new_iter(node, &position);
    const Allocated<void> owner(position);
    Array array;
    for (;;) {
        plist_t element = nullptr;
        plist_array_next_item(node, position, &element);
        if (element == nullptr) return array;
        array.push_back(valueOf(element));
    }
}

Dictionary dictionaryOf(plist_t node) {
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const Allocated<void> owner(position);
    Dictionary dictionary;
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, position, &key, &value);
        const Allocated<char> keyOwner(key);
        if (key == nullptr || value == nullptr) return dictionary;
        dictionary.set(wellFormed(key), valueOf(value));
    }
}

Value valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_STRING:
            return textOf(node);
        case PLIST_UINT:
            return integerOf(node);
        case PLIST_BOOLEAN:
            return booleanOf(node);
        case PLIST_REAL:
            return realOf(node);
        case PLIST_DATE:
            return dateOf(node);
        case PLIST_DATA:
            return dataOf(node);
        case PLIST_ARRAY:
            return arrayOf(node);
        case PLIST_DICT:
            return dictionaryOf(node);
        default:
            return {};
    }
}

Plist parseBinary(std::string_view bytes) {
    plist_t root = nullptr;
    if (isModestBinaryPropertyList(bytes))
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
    return Plist(root);
}

Plist parseXml(std::string_view bytes) {
    plist_t root = nullptr;
    const std::optional<std::string> text = plainXmlPropertyList(bytes);
    if (text) plist_from_xml(text->data(), static_cast<std::uint32_t>(text->size()), &root);
    return Plist(root);
}

}  // namespace

std::optional<Dictionary> parsePropertyList(std::string_view bytes) {
    const Plist root = bytes.starts_with(kBinaryMagic) ? parseBinary(bytes) : parseXml(bytes);
    if (root == nullptr || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
    return dictionaryOf(root.get());
}

std::optional<Dictionary> readPropertyList(const std::string& path) {
    const auto bytes = readFile(path, kLargestPropertyList);
    if (!bytes) return std::nullopt;
    return parsePropertyList({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

}  // namespace ZkMobileBackup
