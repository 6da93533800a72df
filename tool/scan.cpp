#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/backup.h"
#include "tool/command.h"
#include "tool/json_writer.h"
#include "tool/text_table.h"

namespace zkmb {
namespace {

struct Options {
    std::string backup;
    bool json = false;
};

/// One report of the scan.
struct Event {
    std::int64_t state;
    std::optional<std::string> domain;
    double progress;
};

void writeEvent(JsonWriter& json, const Event& event) {
    json.beginObject();
    json.key("state");
    json.number(event.state);
    json.key("domain");
    json.textOrNull(event.domain);
    json.key("progress");
    json.number(event.progress);
    json.endObject();
}

void writeDomain(JsonWriter& json, const ZkMobileBackup::ZkMobileBackupAppDomain& domain) {
    json.beginObject();
    json.key("name");
    json.textOrNull(domain.exportName());
    json.key("class");
    json.text(domain.className());
    json.key("records");
    json.number(domain.records().size());
    json.key("deleted");
    json.number(deletedCount(domain));
    json.endObject();
}

void writeJson(const std::vector<Event>& events, const Domains& domains) {
    JsonWriter json;
    json.beginObject();
    json.key("events");
    json.beginArray();
    for (const Event& event : events) writeEvent(json, event);
    json.endArray();
    json.key("domains");
    json.beginArray();
    for (const Domain& domain : domains) writeDomain(json, *domain);
    json.endArray();
    json.endObject();
    json.finish();
}

void printTable(const Domains& domains) {
    TextTable table({"domain", "class", "records", "deleted"});
    for (const Domain& domain : domains) {
        table.addRow({nameOf(*domain), std::string(domain->className()), std::to_string(domain->records().size()),
                      std::to_string(deletedCount(*domain))});
    }
    table.print();
}

void run(const Options& options, Context& context) {
    std::vector<Event> events;
    const auto parser = scanBackup(options.backup, context, [&](auto state, const Domain& domain, double progress) {
        events.push_back({state, domain != nullptr ? domain->exportName() : std::nullopt, progress});
    });
    for (const Domain& domain : parser->domains()) {
        if (!context.interruption.requested()) parseDomain(*domain, context);
    }
    options.json ? writeJson(events, parser->domains()) : printTable(parser->domains());
    requireManifest(options.backup);
    context.interruption.throwIfRequested();
}

}  // namespace

Action setUpScan(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("BACKUP", options->backup, "Folder of a backup")->required();
    command.add_flag("--json", options->json, "Print the reports of the scan and the domains as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
