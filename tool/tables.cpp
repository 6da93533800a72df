#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "tool/command.h"
#include "tool/database.h"
#include "tool/json_writer.h"
#include "tool/text_table.h"

namespace zkmb {
namespace {

using ZkMobileBackup::ColumnType;
using ZkMobileBackup::RawTableObject;
using ZkMobileBackup::RowList;

struct Options {
    std::string file;
    bool json = false;
};

void writeColumnType(JsonWriter& json, const ColumnType& type) {
    if (!type.defaultText.has_value()) return json.number(type.code);
    json.beginArray();
    json.number(type.code);
    json.text(*type.defaultText);
    json.endArray();
}

void writeColumns(JsonWriter& json, const RawTableObject& table) {
    json.key("filedCount");
    json.number(table.filedCount());
    json.key("filedList");
    json.texts(table.filedList());
    json.key("filedTypeList");
    json.beginArray();
    for (const ColumnType& type : table.filedTypeList()) writeColumnType(json, type);
    json.endArray();
}

void writeRows(JsonWriter& json, const char* key, const RowList& rows) {
    json.key(key);
    json.beginArray();
    for (const ZkMobileBackup::Row& row : rows) {
        json.beginArray();
        for (const std::string_view cell : row) json.text(cell);
        json.endArray();
    }
    json.endArray();
}

void writeTable(JsonWriter& json, const RawTableObject& table) {
    json.beginObject();
    json.key("name");
    json.textOrNull(table.name());
    json.key("tableType");
    json.number(table.tableType());
    json.key("pageNum");
    json.number(table.pageNum());
    json.key("hasIntergerPK");
    json.boolean(table.hasIntergerPK());
    writeColumns(json, table);
    writeRows(json, "rowList", table.rowList());
    writeRows(json, "deletedRowList", table.deletedRowList());
    json.endObject();
}

void writeJson(const ParsedDatabase& database) {
    JsonWriter json;
    json.beginObject();
    json.key("completed");
    json.boolean(database.completed);
    json.key("lastError");
    json.textOrNull(database.parser->lastError());
    json.key("tables");
    json.beginArray();
    for (const auto& table : database.parser->tableList()) writeTable(json, *table);
    json.endArray();
    json.endObject();
    json.finish();
}

void printCounts(const ParsedDatabase& database) {
    TextTable counts({"table", "live", "deleted"});
    for (const auto& table : database.parser->tableList()) {
        counts.addRow({table->name().value_or(""), std::to_string(table->rowList().size()),
                       std::to_string(table->deletedRowList().size())});
    }
    counts.print();
}

void run(const Options& options, Context& context) {
    const ParsedDatabase database = parseDatabase(options.file, context);
    options.json ? writeJson(database) : printCounts(database);
    context.interruption.throwIfRequested();
}

}  // namespace

Action setUpTables(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("FILE", options->file, "Any SQLite database file")->required();
    command.add_flag("--json", options->json, "Print every row of every table as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
