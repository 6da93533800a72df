#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "recovery/model/TableObject.h"

namespace ZkMobileBackup::engine {

/// A word of a CREATE TABLE text.
struct SchemaWord {
    std::string text;
    std::uint16_t length = 0;  ///< bytes from where reading began to the delimiter, cut to 16 bits
};

/// The word at the head of `text`: spaces are skipped, and it ends before the first space, ")" or ",". An opening
/// parenthesis does not end it. Words are at most 1023 bytes.
SchemaWord firstWord(std::string_view text);

/// Class of a declared type word, compared exactly; see ColumnClass.
std::int64_t columnClassOf(std::string_view typeWord);

/// Fills the columns of `table` from its CREATE TABLE text; false for an empty text. A hand scanner that takes what it
/// finds, table constraints included, for columns.
bool readColumns(RawTableObject& table, std::string_view createTable);

}  // namespace ZkMobileBackup::engine
