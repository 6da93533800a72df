#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>
#include <string>

#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"
#include "tool/backup.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/json_writer.h"
#include "tool/text.h"
#include "tool/text_table.h"

namespace zkmb {
namespace {

using ZkMobileBackup::Dictionary;
using ZkMobileBackup::Manifest;

struct Options {
    std::string backup;
    bool json = false;
};

void writeJson(const std::optional<Manifest>& manifest) {
    JsonWriter json;
    if (manifest.has_value()) {
        json.beginArray();
        for (const auto& [offset, record] : *manifest) json.dictionary(record);
        json.endArray();
    } else {
        json.null();
    }
    json.finish();
}

std::string readableEntry(const Dictionary& record, const char* key) {
    const ZkMobileBackup::Value* value = record.find(key);
    return value != nullptr ? readable(*value) : "";
}

void printTable(const Manifest& manifest) {
    TextTable table({"offset", "file", "length", "domain", "name"});
    for (const auto& [offset, record] : manifest) {
        table.addRow({std::to_string(offset), readableEntry(record, "fileID"), readableEntry(record, "filelen"),
                      readableEntry(record, "domain"), readableEntry(record, "filename")});
    }
    table.print();
}

void run(const Options& options) {
    const auto snapshot = openBackup(options.backup);
    const std::optional<Manifest> manifest = ZkMobileBackup::ZkMbdbFileParser::fileListFromMbdb(*snapshot);
    if (options.json) {
        writeJson(manifest);
    } else if (manifest.has_value()) {
        printTable(*manifest);
    }
    if (!manifest.has_value()) {
        requireManifest(options.backup);
        throw Failure(fmt::format("Cannot read the manifest of '{}'.", options.backup));
    }
}

}  // namespace

Action setUpManifest(CLI::App& command, Context&) {
    const auto options = std::make_shared<Options>();
    command.add_option("BACKUP", options->backup, "Folder of a backup")->required();
    command.add_flag("--json", options->json, "Print the records as JSON");
    return [options] { run(*options); };
}

}  // namespace zkmb
