#include <CLI/CLI.hpp>
#include <cstddef>
#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

#include "ZkMobileBackup/domains/TzProductName.h"
#include "ZkMobileBackup/domains/ZkMobileBackupFileDomain.h"
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

std::string productFolder(const Options& options) {
    return options.output + "/" + ZkMobileBackup::TzProductName;
}

void requireOutside(const std::string& folder, const std::string& backup) {
    if (!liesWithin(folder, backup)) return;
    throw Failure(fmt::format("The output folder '{}' lies in the backup, where nothing is ever written.", folder));
}

/// Any folder that files go to may be a link into the backup, or the backup itself.
void requireOutputOutside(const Options& options, const Domains& domains) {
    requireOutside(options.output, options.backup);
    requireOutside(productFolder(options), options.backup);
    for (const Domain& domain : domains) {
        if (const auto name = domain->exportName()) {
            requireOutside(productFolder(options) + "/" + *name, options.backup);
        }
    }
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

/// Whether the domain's records are files of the backup, so that each failure is one of a file.
bool isCopiedOut(const ZkMobileBackupAppDomain& domain) {
    return dynamic_cast<const ZkMobileBackup::ZkMobileBackupFileDomain*>(&domain) != nullptr;
}

/// Writes the marked records.
void extractDomain(ZkMobileBackupAppDomain& domain, const Options& options, Context& context, Outcome& outcome) {
    // Movies are copied into a folder that the library leaves to its host.
    if (nameOf(domain) == kMovieName) makeFolder(productFolder(options));
    Extraction(domain, context).run(options.output, options.type);
    outcome.files = domain.writtenPaths();
    // Ctrl-C also ends the program that packs a document; this is then no failure of its own.
    if (!context.interruption.requested() || isCopiedOut(domain)) outcome.failure = domain.firstFailure();
}

Outcome exportDomain(ZkMobileBackupAppDomain& domain, const Options& options, Context& context) {
    Outcome outcome{.domain = nameOf(domain)};
    parseDomain(domain, context);
    markRecords(domain, options.only, outcome);
    if (outcome.live + outcome.deleted == 0 || context.interruption.requested()) return outcome;
    try {
        extractDomain(domain, options, context, outcome);
    } catch (const Failure& failure) {  // what the other domains give is told all the same
        outcome.failure = failure.what();
    }
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

/// The failure that the command ends with. Of an interrupted one this is the interruption, but what failed until then,
/// or was left incomplete, is told before.
void throwFirstFailure(const std::vector<Outcome>& outcomes, const Interruption& interruption) {
    for (const Outcome& outcome : outcomes) {
        if (outcome.failure.empty()) continue;
        if (!interruption.requested()) throw Failure(outcome.failure);
        writeDiagnostic(outcome.failure);
    }
    interruption.throwIfRequested();
}

void run(const Options& options, Context& context) {
    requireReadableFolder(options.backup);
    requireManifest(options.backup);
    const auto parser = scanBackup(options.backup, context);
    const Domains domains = domainsNamed(parser->domains(), options.domains);
    requireOutputOutside(options, domains);
    makeFolder(options.output);
    const std::vector<Outcome> outcomes = exportDomains(domains, options, context);
    options.json ? writeJson(outcomes) : printSummary(outcomes);
    throwFirstFailure(outcomes, context.interruption);
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
