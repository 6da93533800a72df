#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "ZkMobileBackup/backup/ZkiTunesBackupSnapshot.h"
#include "tool/command.h"
#include "tool/files.h"
#include "tool/json_writer.h"
#include "tool/text.h"
#include "tool/text_table.h"

namespace zkmb {
namespace {

using ZkMobileBackup::ZkiTunesBackupSnapshot;
using Snapshots = std::vector<std::shared_ptr<ZkiTunesBackupSnapshot>>;

struct Options {
    std::string root;
    bool json = false;
};

Snapshots snapshotsIn(const std::string& root) {
    if (root.empty()) return ZkiTunesBackupSnapshot::iTunesBackupSnapshots();
    requireReadableFolder(root);
    return ZkiTunesBackupSnapshot::snapshotsInFolder(root);
}

void writeSnapshot(JsonWriter& json, const ZkiTunesBackupSnapshot& snapshot) {
    json.beginObject();
    json.key("udid");
    json.textOrNull(snapshot.UDID());
    json.key("serialNumber");
    json.textOrNull(snapshot.serialNumber());
    json.key("deviceClass");
    json.textOrNull(snapshot.deviceClass());
    json.key("size");
    json.number(snapshot.size());
    json.key("lastUpdate");
    snapshot.lastUpdate() ? json.date(*snapshot.lastUpdate()) : json.null();
    json.key("path");
    json.text(snapshot.path());
    json.endObject();
}

void writeJson(const Snapshots& snapshots) {
    JsonWriter json;
    json.beginArray();
    for (const auto& snapshot : snapshots) writeSnapshot(json, *snapshot);
    json.endArray();
    json.finish();
}

void printTable(const Snapshots& snapshots) {
    TextTable table({"device", "serial number", "last backup", "UDID", "path"});
    for (const auto& snapshot : snapshots) {
        const auto date = snapshot->lastUpdate() ? iso8601(*snapshot->lastUpdate()) : std::nullopt;
        table.addRow({snapshot->deviceClass().value_or(""), snapshot->serialNumber().value_or(""), date.value_or(""),
                      snapshot->UDID().value_or(""), snapshot->path()});
    }
    table.print();
}

void run(const Options& options, const Context& context) {
    const Snapshots snapshots = snapshotsIn(options.root);
    options.json ? writeJson(snapshots) : printTable(snapshots);
    context.interruption.throwIfRequested();
}

}  // namespace

Action setUpList(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("--root", options->root, "Folder that holds the backups, instead of the user's own");
    command.add_flag("--json", options->json, "Print the backups as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
