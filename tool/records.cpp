#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "tool/backup.h"
#include "tool/command.h"
#include "tool/json_writer.h"
#include "tool/row_table.h"

namespace zkmb {
namespace {

using ZkMobileBackup::ZkMobileBackupAppDomainRecord;

struct Options {
    std::string backup;
    std::string domain;
    bool json = false;
};

ZkMobileBackup::Dictionary rowOf(const ZkMobileBackupAppDomainRecord& record) {
    return withoutIdentity(record.value().value_or(ZkMobileBackup::Dictionary()));
}

void writeRecord(JsonWriter& json, const ZkMobileBackupAppDomainRecord& record) {
    json.beginObject();
    json.key("deleted");
    json.boolean(record.isDeleted());
    json.key("value");
    json.dictionary(rowOf(record));
    json.key("exportValue");
    const auto exported = record.exportValue();
    exported.has_value() ? json.dictionary(*exported) : json.null();
    json.endObject();
}

void writeJson(const Domains& domains) {
    JsonWriter json;
    json.beginArray();
    for (const Domain& domain : domains) {
        for (const auto& record : domain->records()) writeRecord(json, *record);
    }
    json.endArray();
    json.finish();
}

void printTable(const Domains& domains, const std::string& name) {
    RowTable table;
    for (const Domain& domain : domains) {
        for (const auto& record : domain->records()) table.add(rowOf(*record), record->isDeleted());
    }
    table.print(name);
}

void run(const Options& options, Context& context) {
    const auto parser = scanBackup(options.backup, context);
    requireManifest(options.backup);
    const Domains domains = domainsNamed(parser->domains(), {options.domain});
    for (const Domain& domain : domains) {
        if (!context.interruption.requested()) parseDomain(*domain, context);
    }
    options.json ? writeJson(domains) : printTable(domains, options.domain);
    context.interruption.throwIfRequested();
}

}  // namespace

Action setUpRecords(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("BACKUP", options->backup, "Folder of a backup")->required();
    command.add_option("--domain", options->domain, "Name of a domain as 'zkmb scan' shows it")->required();
    command.add_flag("--json", options->json, "Print the records as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
