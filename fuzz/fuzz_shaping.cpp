// Every result table over arbitrary raw tables. The input is text, one line a thing:
//   T<name>\t<column>\t...   begins a table
//   L<cell>\t...             adds a live row to it, D<cell>\t... a deleted one
//   C<identifier>\t<name>    adds an entry to the contacts map, which there is none of without such a line
//   S<digit>                 asks to stop after that many progress reports, for the table that is shaped then
//   N<digit>                 is the number of tables that the database counts
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recovery/TableKeys.h"
#include "recovery/shaping/result_table.h"

using namespace ZkMobileBackup;

namespace {

// A join may rightly yield the product of all its tables; more rows would only cost time and memory.
constexpr std::size_t kRowLimit = 100;

// Columns of this ending hold lists, which a row has only once something is in them.
constexpr std::string_view kListEnding = "List";
// Every conversation holds its messages here.
constexpr std::string_view kMessagesKey = "textlist";

struct Database {
    std::vector<std::shared_ptr<RawTableObject>> tables;
    std::optional<Dictionary> contactsMap;
    std::int64_t tableCount = 1;
    std::size_t stopAfter = static_cast<std::size_t>(-1);

    const Dictionary* contacts() const { return contactsMap ? &*contactsMap : nullptr; }
};

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        parts.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

void beginTable(Database& database, std::vector<std::string> parts) {
    auto table = std::make_shared<RawTableObject>();
    table->setName(parts.front());
    parts.erase(parts.begin());
    table->setFiledList(std::move(parts));
    database.tables.push_back(std::move(table));
}

void addRow(RowList& rows, const std::vector<std::string>& cells) {
    if (rows.size() < kRowLimit) rows.append(cells);
}

void addContact(Database& database, const std::vector<std::string>& parts) {
    if (!database.contactsMap) database.contactsMap.emplace();
    database.contactsMap->set(parts.front(), parts.back());
}

std::size_t digit(std::string_view text) {
    return text.empty() ? 0 : static_cast<unsigned char>(text[0] - '0');
}

void addLine(Database& database, std::string_view line) {
    if (line.empty()) return;
    const std::string_view content = line.substr(1);
    if (line[0] == 'T') beginTable(database, split(content, '\t'));
    if (line[0] == 'C') addContact(database, split(content, '\t'));
    if (line[0] == 'S') database.stopAfter = digit(content);
    if (line[0] == 'N') database.tableCount = static_cast<std::int64_t>(digit(content));
    if (database.tables.empty()) return;
    RawTableObject& table = *database.tables.back();
    if (line[0] == 'L') addRow(table.rowList(), split(content, '\t'));
    if (line[0] == 'D') addRow(table.deletedRowList(), split(content, '\t'));
}

void check(bool holds) {
    if (!holds) std::abort();
}

/// A list that is there is never empty; whatever is no list is a text.
void checkValue(std::string_view key, const Value& value) {
    const bool messages = key == kMessagesKey;
    if (!messages && !key.ends_with(kListEnding)) return check(value.text() != nullptr);
    check(value.array() != nullptr && !value.array()->empty());
    for (const Value& item : *value.array()) check(messages ? item.dictionary() != nullptr : item.text() != nullptr);
}

void checkRow(const Dictionary& row, const CustomTableObject& table) {
    check(row.keyAt(0) == kRowIdentityKey);
    check(row.contains(kMessagesKey) == (table.name() == "Message"));
    for (const std::string& column : table.filedList()) check(row.contains(column) || column.ends_with(kListEnding));
    for (std::size_t i = 0; i < row.size(); ++i) checkValue(row.keyAt(i), row.valueAt(i));
}

void checkRows(const RowList& rows, const CustomTableObject& table) {
    for (const Row& row : rows) {
        check(row.dictionary() != nullptr);
        checkRow(*row.dictionary(), table);
    }
}

using Shape = std::function<std::shared_ptr<CustomTableObject>(const shaping::Source& source)>;

/// No report comes after a stop request.
void shapeAndCheck(const Database& database, const Shape& shape) {
    std::atomic<bool> stop{database.stopAfter == 0};
    std::size_t reports = 0;
    const auto table = shape({.tables = database.tables,
                              .stop = stop,
                              .tableCount = database.tableCount,
                              .report = [&](const Dictionary& progress) {
                                  check(progress.size() == 4 && !stop);
                                  stop = ++reports == database.stopAfter;
                              }});
    check(table->name() && !table->filedList().empty());
    checkRows(table->rowList(), *table);
    checkRows(table->deletedRowList(), *table);
}

std::vector<Shape> shapes(const Database& database) {
    const Dictionary* contacts = database.contacts();
    return {shaping::shapeReminders,
            shaping::shapeCalendar,
            shaping::shapeBookmarks,
            shaping::shapeNotes,
            [contacts](const shaping::Source& source) { return shaping::shapeMessages(source, contacts); },
            [contacts](const shaping::Source& source) { return shaping::shapeCallHistory(source, contacts); }};
}

/// The map that the contacts are to fill must name the parties of the other tables as well as any other map.
void shapeContactsAndCheck(Database& database) {
    shapeAndCheck(database, [&database](const shaping::Source& source) {
        return shaping::shapeContacts(source, database.contactsMap);
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Database database;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    for (const std::string& line : split(input, '\n')) addLine(database, line);
    for (const Shape& shape : shapes(database)) shapeAndCheck(database, shape);
    shapeContactsAndCheck(database);
    for (const Shape& shape : shapes(database)) shapeAndCheck(database, shape);
    return 0;
}
