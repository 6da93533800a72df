#include "recovery/shaping/party_name.h"

#include <optional>
#include <string>
#include <unicode/utf16.h>

#include "base/Text.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr std::size_t kCountryPrefixUnits = 3;  // "+" and a country code of two digits

/// An international number as it is dialled within its country; nothing when it is too short to have a country code,
/// or when the cut would go through a character: no name is kept under half of one.
std::optional<std::string> withoutCountryPrefix(std::string_view identifier) {
    const std::u16string units = toUtf16(identifier);
    if (units.size() < kCountryPrefixUnits || U16_IS_LEAD(units[kCountryPrefixUnits - 1])) return std::nullopt;
    return toUtf8(std::u16string_view(units).substr(kCountryPrefixUnits));
}

const std::string* nameOf(std::string_view identifier, const Dictionary& contactsMap) {
    if (!identifier.starts_with('+')) return contactsMap.text(identifier);
    if (const std::string* name = contactsMap.text(identifier.substr(1))) return name;
    const auto number = withoutCountryPrefix(identifier);
    return number ? contactsMap.text(*number) : nullptr;
}

}  // namespace

std::string_view partyName(std::optional<std::string_view> identifier, const Dictionary* contactsMap) {
    if (!identifier || contactsMap == nullptr) return kUnknownPerson;
    const std::string* name = nameOf(*identifier, *contactsMap);
    return name != nullptr ? std::string_view(*name) : kUnknownPerson;
}

}  // namespace ZkMobileBackup::shaping
