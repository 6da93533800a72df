#include "recovery/engine/schema.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Text.h"

namespace ZkMobileBackup::engine {

namespace {

constexpr std::size_t kLongestWord = 1023;

constexpr std::array<std::pair<std::string_view, ColumnClass>, 5> kTypeWords = {{
    {"INTEGER", kColumnInteger},
    {"TIMESTAMP", kColumnInteger},
    {"VARCHAR", kColumnText},
    {"TEXT", kColumnText},
    {"BLOB", kColumnBlob},
}};

/// Walks a CREATE TABLE text and collects its columns.
class ColumnScanner {
public:
    ColumnScanner(RawTableObject& table, std::string_view text, std::size_t start)
        : table_(table), text_(text), position_(std::min(start, text.size())) {}

    void scan() {
        while (!atEnd() && current() != ')') {
            const bool opensList = current() == '(' && depth_ == 0;
            if (opensList || (current() == ',' && depth_ == 1)) {
                ++position_;
                readColumn();
                if (opensList) ++depth_;
            } else {
                step();
            }
        }
    }

private:
    bool atEnd() const { return position_ >= text_.size(); }
    char current() const { return atEnd() ? '\0' : text_[position_]; }

    void step() {
        ++position_;
        if (depth_ == 1 && current() == '(') depth_ = 2;
        if (depth_ >= 2 && current() == ')') {
            ++position_;
            --depth_;
        }
    }

    std::string nextWord() {
        SchemaWord word = firstWord(text_.substr(std::min(position_, text_.size())));
        position_ += word.length;
        return std::move(word.text);
    }

    void readColumn() {
        const bool first = table_.filedList().empty();
        table_.filedList().push_back(nextWord());
        table_.setFiledCount(table_.filedCount() + 1);
        ColumnType type{columnClassOf(nextWord()), std::nullopt};
        const std::string constraint = nextWord();
        // The declared type is not looked at: a text key counts as stored in the rowid, too.
        if (first && constraint == "PRIMARY") table_.setHasIntergerPK(true);
        if (constraint == "DEFAULT") type.defaultText = nextWord();
        table_.filedTypeList().push_back(std::move(type));
    }

    RawTableObject& table_;
    std::string_view text_;
    std::size_t position_;
    int depth_ = 0;
};

}  // namespace

SchemaWord firstWord(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t end = std::min(text.find_first_of(" ),", start), text.size());
    const std::string_view word = text.substr(start, std::min(end - start, kLongestWord));
    return {std::string(withoutCutCharacter(word)), static_cast<std::uint16_t>(end)};
}

std::int64_t columnClassOf(std::string_view typeWord) {
    for (const auto& [word, columnClass] : kTypeWords) {
        if (word == typeWord) return columnClass;
    }
    return kColumnUnknown;
}

bool readColumns(RawTableObject& table, std::string_view createTable) {
    if (createTable.empty()) return false;
    // Right behind the words CREATE TABLE and the name as the schema row has it: a quoted name shifts the scan, which
    // the parentheses that follow make good.
    constexpr std::string_view kLead = "CREATE TABLE ";
    const std::size_t start = kLead.size() + table.name().value_or("").size();
    ColumnScanner(table, createTable, start).scan();
    return true;
}

}  // namespace ZkMobileBackup::engine
