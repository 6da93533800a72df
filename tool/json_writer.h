#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "base/Value.h"

namespace zkmb {

/// Writes one JSON document to standard output piece by piece, so that the size of a result does not matter. Entries of
/// an array that are arrays or objects begin a line of their own. Throws Failure when the output cannot be written.
class JsonWriter {
public:
    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    /// Begins an entry of an object; its value comes next.
    void key(std::string_view name);

    void null() { raw("null"); }
    void boolean(bool value) { raw(value ? "true" : "false"); }
    void text(std::string_view value);
    void textOrNull(const std::optional<std::string>& value) { value ? text(*value) : null(); }
    void texts(const std::vector<std::string>& values);
    template <typename Integer>
    requires(std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>) void number(Integer value) {
        raw(std::to_string(value));
    }
    /// A number that JSON cannot carry becomes null.
    void number(double value);
    /// ISO 8601 in UTC, null for an instant outside the years 0 to 9999.
    void date(ZkMobileBackup::Date value);
    /// A value with all that it holds: dates as texts, images and sizes as {"width","height"}, bytes as null.
    void value(const ZkMobileBackup::Value& value);
    void dictionary(const ZkMobileBackup::Dictionary& dictionary);

    /// Ends the document with a line break and writes what is left.
    void finish();

private:
    struct Level {
        bool isArray = false;
        bool hasEntries = false;
    };

    void begin(char bracket);
    void end(char bracket);
    void raw(std::string_view json);
    void separate(bool isContainer);
    void append(std::string_view json);
    void appendText(std::string_view text);
    void extent(double width, double height);
    void array(const ZkMobileBackup::Array& entries);

    std::vector<Level> levels_;
    bool afterKey_ = false;
    std::string buffer_;
};

}  // namespace zkmb
