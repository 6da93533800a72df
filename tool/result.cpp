#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
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

/// What an application's database gives.
struct Shaped {
    TableList tables{};
    std::optional<Dictionary> contacts{};  // number or address to name; the contacts database alone has it
};

Shaped shapeContacts(DlxSQLiteParser& parser, const Dictionary*) {
    std::optional<Dictionary> contacts;
    TableList tables{parser.customTableForAddressBookDB(&contacts)};
    // Without the tables that it is made of there is no map; its reader finds nobody in either.
    return {std::move(tables), contacts.value_or(Dictionary())};
}
Shaped shapeCalendar(DlxSQLiteParser& parser, const Dictionary*) {
    return {{parser.customTableForCalendarDB(), parser.customTableForReminderDB()}};
}
Shaped shapeMessages(DlxSQLiteParser& parser, const Dictionary* contacts) {
    return {{parser.customTableForSMSDB(contacts)}};
}
Shaped shapeNotes(DlxSQLiteParser& parser, const Dictionary*) {
    return {{parser.customTableForNotesDB()}};
}
Shaped shapeCalls(DlxSQLiteParser& parser, const Dictionary* contacts) {
    return {{parser.customTableForCallHistoryDB(contacts)}};
}
Shaped shapeBookmarks(DlxSQLiteParser& parser, const Dictionary*) {
    return {{parser.customTableForBookmarksDB()}};
}
Shaped shapeNothing(DlxSQLiteParser&, const Dictionary*) {
    return {};
}

/// What becomes of a database file of this name, the extension left out.
struct Application {
    const char* name;
    Shaped (*shape)(DlxSQLiteParser& parser, const Dictionary* contacts);  // null contacts for none
};

constexpr Application kApplications[] = {
    {"AddressBook", shapeContacts}, {"Calendar", shapeCalendar},  {"sms", shapeMessages},
    {"notes", shapeNotes},          {"call_history", shapeCalls}, {"Bookmarks", shapeBookmarks},
    {"voicemail", shapeNothing},    {"Photos", shapeNothing},
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

void writeJson(const Shaped& shaped) {
    JsonWriter json;
    json.beginObject();
    json.key("tables");
    json.beginArray();
    for (const auto& table : shaped.tables) writeTable(json, *table);
    json.endArray();
    if (shaped.contacts.has_value()) {
        json.key("contacts");
        json.dictionary(*shaped.contacts);
    }
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

/// The names in a contacts database, whatever the file is called; nothing when it lacks the tables.
std::optional<Dictionary> contactsIn(const std::string& file, Context& context) {
    std::optional<Dictionary> contacts;
    parseDatabase(file, context).parser->customTableForAddressBookDB(&contacts);
    return contacts;
}

void run(const Options& options, Context& context) {
    requireReadableFile(options.file);
    const Application& application = applicationOf(options.file);
    std::optional<Dictionary> contacts;
    if (!options.contacts.empty()) contacts = contactsIn(options.contacts, context);
    const ParsedDatabase database = parseDatabase(options.file, context);
    const Shaped shaped = application.shape(*database.parser, contacts.has_value() ? &*contacts : nullptr);
    if (options.json) {
        writeJson(shaped);
    } else {
        for (const auto& table : shaped.tables) printTable(*table);
    }
    context.interruption.throwIfRequested();
}

}  // namespace

Action setUpResult(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("FILE", options->file, "Database of an application, under its own name, such as notes.sqlite")
        ->required();
    command.add_option("--contacts", options->contacts,
                       "Contacts database that names the people of messages and calls");
    command.add_flag("--json", options->json, "Print the tables as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
