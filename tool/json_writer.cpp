#include "tool/json_writer.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/Image.h"
#include "tool/output.h"
#include "tool/text.h"

namespace zkmb {
namespace {

constexpr std::size_t kFlushSize = 64 * 1024;

bool isPlain(char c) {
    return c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
}

}  // namespace

void JsonWriter::key(std::string_view name) {
    separate(false);
    appendText(name);
    append(":");
    afterKey_ = true;
}

void JsonWriter::text(std::string_view value) {
    separate(false);
    appendText(value);
}

void JsonWriter::texts(const std::vector<std::string>& values) {
    beginArray();
    for (const std::string& value : values) text(value);
    endArray();
}

void JsonWriter::number(double value) {
    raw(nlohmann::json(value).dump());
}

void JsonWriter::date(ZkMobileBackup::Date value) {
    textOrNull(iso8601(value));
}

void JsonWriter::value(const ZkMobileBackup::Value& value) {
    if (const std::string* string = value.text()) return text(*string);
    if (const std::int64_t* integer = value.integer()) return number(*integer);
    if (const double* floating = value.floating()) return number(*floating);
    if (const ZkMobileBackup::Date* instant = value.date()) return date(*instant);
    if (const ZkMobileBackup::Size* size = value.size()) return extent(size->width, size->height);
    if (const auto* image = value.image(); image != nullptr && *image != nullptr) {
        return extent((*image)->width(), (*image)->height());
    }
    if (const ZkMobileBackup::Array* entries = value.array()) return array(*entries);
    if (const ZkMobileBackup::Dictionary* entries = value.dictionary()) return dictionary(*entries);
    null();
}

void JsonWriter::dictionary(const ZkMobileBackup::Dictionary& dictionary) {
    beginObject();
    for (std::size_t i = 0; i < dictionary.size(); ++i) {
        key(dictionary.keyAt(i));
        value(dictionary.valueAt(i));
    }
    endObject();
}

void JsonWriter::finish() {
    append("\n");
    writeOutput(buffer_);
    buffer_.clear();
}

void JsonWriter::array(const ZkMobileBackup::Array& entries) {
    beginArray();
    for (const ZkMobileBackup::Value& entry : entries) value(entry);
    endArray();
}

void JsonWriter::extent(double width, double height) {
    beginObject();
    key("width");
    number(width);
    key("height");
    number(height);
    endObject();
}

void JsonWriter::begin(char bracket) {
    separate(true);
    append({&bracket, 1});
    levels_.push_back({.isArray = bracket == '['});
}

void JsonWriter::end(char bracket) {
    levels_.pop_back();
    append({&bracket, 1});
}

void JsonWriter::raw(std::string_view json) {
    separate(false);
    append(json);
}

void JsonWriter::separate(bool isContainer) {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (levels_.empty()) return;
    Level& level = levels_.back();
    if (level.hasEntries) append(",");
    if (isContainer && level.isArray) append("\n");
    level.hasEntries = true;
}

void JsonWriter::append(std::string_view json) {
    buffer_.append(json);
    if (buffer_.size() < kFlushSize) return;
    writeOutput(buffer_);
    buffer_.clear();
}

void JsonWriter::appendText(std::string_view text) {
    if (!std::all_of(text.begin(), text.end(), isPlain)) {
        // Bytes that are no UTF-8 must not make the whole document unreadable.
        return append(nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    }
    append("\"");
    append(text);
    append("\"");
}

}  // namespace zkmb
