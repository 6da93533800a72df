#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

// The lists of a person, by their names in a contacts row.
inline constexpr std::string_view kMobilePhoneList = "mobilePhoneList";
inline constexpr std::string_view kHomePhoneList = "homePhoneList";
inline constexpr std::string_view kAddressList = "addressList";
inline constexpr std::string_view kEmailList = "emailList";

/// The numbers and addresses of all persons, grouped by their owners.
///
/// Owners are told apart by the text of their key, but found by its number: "5", " 5" and "05" are three owners, and
/// person 5 gets the first of them alone.
class MultiValues {
public:
    /// Reads the table of all persons' values, until a stop request.
    MultiValues(const TableShaper& shaper, const RawTableObject& table);

    /// Number of the first owner whose key reads as this number, live owners before carved ones; nothing for none.
    std::optional<std::size_t> find(std::int64_t personKey) const;
    std::size_t ownerCount() const { return owners_.size(); }
    /// Number of values in all lists.
    std::size_t valueCount() const { return valueCount_; }
    /// The lists of an owner, each under its name, in the order in which they were begun.
    const Dictionary& listsOf(std::size_t owner) const { return owners_[owner].lists; }

private:
    struct Owner {
        std::int64_t personKey;
        Dictionary lists;
    };

    std::vector<Owner> owners_;  // by ascending key; those of one key in their order
    std::size_t valueCount_ = 0;
};

}  // namespace ZkMobileBackup::shaping
