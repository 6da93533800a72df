// Every result table over arbitrary raw tables. The input is text, one line a thing:
//   T<name>\t<column>\t...   begins a table
//   L<cell>\t...             adds a live row to it, D<cell>\t... a deleted one
//   S<digit>                 asks to stop after that many progress reports, for the table that is shaped then
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "recovery/TableKeys.h"
#include "recovery/shaping/result_table.h"

using namespace ZkMobileBackup;

namespace {

// A join may rightly yield the product of both tables; more rows would only cost time and memory.
constexpr std::size_t kRowLimit = 200;

struct Database {
    std::vector<std::shared_ptr<RawTableObject>> tables;
    std::size_t stopAfter = static_cast<std::size_t>(-1);
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

void addLine(Database& database, std::string_view line) {
    if (line.empty()) return;
    const std::string_view content = line.substr(1);
    if (line[0] == 'T') beginTable(database, split(content, '\t'));
    if (line[0] == 'S' && !content.empty()) database.stopAfter = static_cast<unsigned char>(content[0] - '0');
    if (database.tables.empty()) return;
    RawTableObject& table = *database.tables.back();
    if (line[0] == 'L') addRow(table.rowList(), split(content, '\t'));
    if (line[0] == 'D') addRow(table.deletedRowList(), split(content, '\t'));
}

void checkRows(const RowList& rows, const std::vector<std::string>& columns) {
    for (const Row& row : rows) {
        const Dictionary* dictionary = row.dictionary();
        if (dictionary == nullptr || dictionary->keyAt(0) != kRowIdentityKey) std::abort();
        for (const std::string& column : columns) {
            if (dictionary->text(column) == nullptr) std::abort();
        }
    }
}

void shapeAndCheck(const Database& database, std::shared_ptr<CustomTableObject> (*shape)(const shaping::Source&)) {
    std::atomic<bool> stop{database.stopAfter == 0};
    std::size_t reports = 0;
    const auto table = shape({.tables = database.tables, .stop = stop, .report = [&](const Dictionary& progress) {
                                  if (progress.size() != 4 || stop) std::abort();
                                  stop = ++reports == database.stopAfter;
                              }});
    if (!table->name() || table->filedList().empty()) std::abort();
    checkRows(table->rowList(), table->filedList());
    checkRows(table->deletedRowList(), table->filedList());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Database database;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    for (const std::string& line : split(input, '\n')) addLine(database, line);
    for (const auto shape :
         {shaping::shapeReminders, shaping::shapeCalendar, shaping::shapeBookmarks, shaping::shapeNotes}) {
        shapeAndCheck(database, shape);
    }
    return 0;
}
