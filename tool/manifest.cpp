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

Manifest readManifest(const std::string& backup) {
    const auto snapshot = openBackup(backup);
    if (auto manifest = ZkMobileBackup::ZkMbdbFileParser::fileListFromMbdb(*snapshot)) return *std::move(manifest);
    requireManifest(backup);
    throw Failure(fmt::format("Cannot read the manifest of '{}'.", backup));
}

void writeManifest(const Options& options) {
    if (!options.json) return printTable(readManifest(options.backup));
    try {
        writeJson(readManifest(options.backup));
    } catch (const Failure&) {
        writeJson(std::nullopt);
        throw;
    }
}

void run(const Options& options, const Context& context) {
    writeManifest(options);
    context.interruption.throwIfRequested();
}

}  // namespace

Action setUpManifest(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("BACKUP", options->backup, "Folder of a backup")->required();
    command.add_flag("--json", options->json, "Print the records as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
