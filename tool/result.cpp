#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

#include "tool/command.h"
#include "tool/database.h"
#include "tool/failure.h"
#include "tool/files.h"
#include "tool/json_writer.h"
#include "tool/row_table.h"

namespace zkmb {
namespace {

using ZkMobileBackup::CustomTableObject;
using ZkMobileBackup::Dictionary;
using ZkMobileBackup::DlxSQLiteParser;
using ZkMobileBackup::RowList;
using TableList = std::vector<std::shared_ptr<CustomTableObject>>;

struct Options {
    std::string file;
    std::string contacts;
    bool json = false;
};

TableList calendarTables(DlxSQLiteParser& parser) {
    return {parser.customTableForCalendarDB(), parser.customTableForReminderDB()};
}
TableList noteTables(DlxSQLiteParser& parser) {
    return {parser.customTableForNotesDB()};
}
TableList bookmarkTables(DlxSQLiteParser& parser) {
    return {parser.customTableForBookmarksDB()};
}
TableList noTables(DlxSQLiteParser&) {
    return {};
}

/// What becomes of a database file of this name, the extension left out.
struct Application {
    const char* name;
    TableList (*shape)(DlxSQLiteParser& parser);  // null as long as the application's tables are not shaped
};

constexpr Application kApplications[] = {
    {"AddressBook", nullptr},  {"Calendar", calendarTables},  {"sms", nullptr},        {"notes", noteTables},
    {"call_history", nullptr}, {"Bookmarks", bookmarkTables}, {"voicemail", noTables}, {"Photos", noTables},
};

/// A trailing "." is no extension.
std::string nameWithoutExtension(const std::filesystem::path& file) {
    return file.extension() == "." ? file.filename() : file.stem();
}

const Application& applicationOf(const std::string& file) {
    const std::string name = nameWithoutExtension(file);
    const auto* found = std::ranges::find_if(kApplications, [&](const Application& a) { return a.name == name; });
    if (found == std::end(kApplications)) {
        throw Failure(fmt::format("No application keeps its data in a database named '{}': '{}'.", name, file));
    }
    if (found->shape == nullptr) {
        throw Failure(
            fmt::format("The tables of '{}' are not shaped yet, 'zkmb tables' shows them as they are.", file));
    }
    return *found;
}

void writeRows(JsonWriter& json, const char* key, const RowList& rows) {
    json.key(key);
    json.beginArray();
    for (const ZkMobileBackup::Row& row : rows) json.dictionary(withoutIdentity(*row.dictionary()));
    json.endArray();
}

void writeTable(JsonWriter& json, const CustomTableObject& table) {
    json.beginObject();
    json.key("name");
    json.textOrNull(table.name());
    json.key("filedList");
    json.texts(table.filedList());
    writeRows(json, "rowList", table.rowList());
    writeRows(json, "deletedRowList", table.deletedRowList());
    json.endObject();
}

void writeJson(const TableList& tables) {
    JsonWriter json;
    json.beginObject();
    json.key("tables");
    json.beginArray();
    for (const auto& table : tables) writeTable(json, *table);
    json.endArray();
    json.endObject();
    json.finish();
}

void addRows(RowTable& people, const RowList& rows, bool deleted) {
    for (const ZkMobileBackup::Row& row : rows) people.add(withoutIdentity(*row.dictionary()), deleted);
}

void printTable(const CustomTableObject& table) {
    RowTable people;
    addRows(people, table.rowList(), false);
    addRows(people, table.deletedRowList(), true);
    people.print(table.name().value_or(""));
}

void run(const Options& options, Context& context) {
    requireReadableFile(options.file);
    const Application& application = applicationOf(options.file);
    if (!options.contacts.empty()) requireReadableFile(options.contacts);
    const ParsedDatabase database = parseDatabase(options.file, context);
    const TableList tables = application.shape(*database.parser);
    if (options.json) {
        writeJson(tables);
    } else {
        for (const auto& table : tables) printTable(*table);
    }
    context.interruption.throwIfRequested();
}

}  // namespace

Action setUpResult(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("FILE", options->file, "Database of an application, under its own name, such as notes.sqlite")
        ->required();
    command.add_option("--contacts", options->contacts, "Contacts database, for the databases of messages and calls");
    command.add_flag("--json", options->json, "Print the tables as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
