#include <CLI/CLI.hpp>
#include <cstddef>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "export/DlxExporter.h"
#include "tool/backup.h"
#include "tool/command.h"
#include "tool/documents.h"
#include "tool/extraction.h"
#include "tool/failure.h"
#include "tool/files.h"
#include "tool/json_writer.h"
#include "tool/output.h"
#include "tool/text_table.h"

namespace zkmb {
namespace {

using ZkMobileBackup::DlxExportType;
using ZkMobileBackup::ZkMobileBackupAppDomain;

struct Options {
    std::string backup;
    std::string output;
    DlxExportType type = DlxExportType::kHtml;
    std::vector<std::string> domains;
    std::string only;
    bool json = false;
};

/// What became of the records of one domain.
struct Outcome {
    std::string domain;
    std::size_t live = 0;
    std::size_t deleted = 0;
    std::vector<std::string> files{};
    std::string failure{};
};

void requireOutputOutside(const Options& options) {
    if (!liesWithin(options.output, options.backup)) return;
    throw Failure(
        fmt::format("The output folder '{}' lies in the backup, where nothing is ever written.", options.output));
}

bool isWanted(bool deleted, const std::string& only) {
    return only.empty() || (only == "deleted") == deleted;
}

void markRecords(ZkMobileBackupAppDomain& domain, const std::string& only, Outcome& outcome) {
    for (const auto& record : domain.records()) {
        if (!isWanted(record->isDeleted(), only)) continue;
        record->setShouldRecovery(true);
        ++(record->isDeleted() ? outcome.deleted : outcome.live);
    }
}

Outcome exportDomain(ZkMobileBackupAppDomain& domain, const Options& options, Context& context) {
    Outcome outcome{.domain = nameOf(domain)};
    parseDomain(domain, context);
    markRecords(domain, options.only, outcome);
    if (outcome.live + outcome.deleted == 0 || context.interruption.requested()) return outcome;
    Extraction(domain, context).run(options.output, options.type);
    outcome.files = domain.exporter()->writtenPaths();
    outcome.failure = domain.exporter()->firstFailure();
    return outcome;
}

std::vector<Outcome> exportDomains(const Domains& domains, const Options& options, Context& context) {
    std::vector<Outcome> outcomes;
    for (const Domain& domain : domains) {
        if (!context.interruption.requested()) outcomes.push_back(exportDomain(*domain, options, context));
    }
    return outcomes;
}

void writeJson(const std::vector<Outcome>& outcomes) {
    JsonWriter json;
    json.beginObject();
    json.key("domains");
    json.beginArray();
    for (const Outcome& outcome : outcomes) {
        json.beginObject();
        json.key("name");
        json.text(outcome.domain);
        json.key("live");
        json.number(outcome.live);
        json.key("deleted");
        json.number(outcome.deleted);
        json.key("files");
        json.texts(outcome.files);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    json.finish();
}

void printSummary(const std::vector<Outcome>& outcomes) {
    TextTable table({"domain", "live", "deleted", "files"});
    std::vector<std::string> paths;
    for (const Outcome& outcome : outcomes) {
        table.addRow({outcome.domain, std::to_string(outcome.live), std::to_string(outcome.deleted),
                      std::to_string(outcome.files.size())});
        paths.insert(paths.end(), outcome.files.begin(), outcome.files.end());
    }
    table.print();
    writeOutput("\n");
    printWrittenFiles(paths);
}

void throwFirstFailure(const std::vector<Outcome>& outcomes) {
    for (const Outcome& outcome : outcomes) {
        if (!outcome.failure.empty()) throw Failure(outcome.failure);
    }
}

void run(const Options& options, Context& context) {
    requireReadableFolder(options.backup);
    requireManifest(options.backup);
    requireOutputOutside(options);
    const auto parser = scanBackup(options.backup, context);
    const Domains domains = domainsNamed(parser->domains(), options.domains);
    makeFolder(options.output);
    const std::vector<Outcome> outcomes = exportDomains(domains, options, context);
    options.json ? writeJson(outcomes) : printSummary(outcomes);
    // Ctrl-C also ends the program that packs a document; this is then no failure of its own.
    context.interruption.throwIfRequested();
    throwFirstFailure(outcomes);
}

}  // namespace

Action setUpExport(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("BACKUP", options->backup, "Folder of a backup; nothing in it is changed")->required();
    addOutputOption(command, options->output, "Folder for the files");
    addTypeOption(command, options->type);
    command.add_option("--domain", options->domains, "Name of a domain as 'zkmb scan' shows it; may repeat")
        ->allow_extra_args(false);
    command.add_option("--only", options->only, "Leave out the other records")
        ->check(CLI::IsMember({"live", "deleted"}).description("live|deleted"));
    command.add_flag("--json", options->json, "Print the summary as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
