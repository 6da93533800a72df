#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "base/MainQueue.h"
#include "export/DlxExporter.h"
#include "tool/command.h"
#include "tool/documents.h"
#include "tool/failure.h"
#include "tool/files.h"
#include "tool/json_writer.h"
#include "tool/progress_bar.h"

namespace zkmb {
namespace {

using nlohmann::ordered_json;
using ZkMobileBackup::Array;
using ZkMobileBackup::Dictionary;
using ZkMobileBackup::DlxExporter;
using ZkMobileBackup::DlxExportType;
using ZkMobileBackup::Rows;
using ZkMobileBackup::Tables;
using ZkMobileBackup::Value;

struct Options {
    std::string file;
    std::string output;
    DlxExportType type = DlxExportType::kHtml;
    bool json = false;
};

// What a writer shows as an empty cell: anything but texts, arrays, and the objects in them.
Value plainValue(const ordered_json& json) {
    if (json.is_string()) return json.get_ref<const std::string&>();
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_number()) return json.get<double>();
    if (json.is_boolean()) return json.get<bool>() ? 1 : 0;
    return {};
}

Value entryValue(const ordered_json& json) {
    if (!json.is_object()) return plainValue(json);
    Dictionary texts;
    for (const auto& [key, value] : json.items()) texts.set(key, plainValue(value));
    return texts;
}

Value cellValue(const ordered_json& json) {
    if (!json.is_array()) return entryValue(json);
    Array entries;
    for (const ordered_json& entry : json) entries.push_back(entryValue(entry));
    return entries;
}

Rows rowsOf(const ordered_json& json, const std::string& file) {
    if (!json.is_array()) throw Failure(fmt::format("'{}' holds something else than arrays of objects.", file));
    Rows rows;
    for (const ordered_json& object : json) {
        if (!object.is_object()) throw Failure(fmt::format("'{}' holds a row that is no object.", file));
        Dictionary row;
        for (const auto& [key, value] : object.items()) row.set(key, cellValue(value));
        rows.append(std::move(row));
    }
    return rows;
}

/// The name of a table becomes part of a file's name, and must not lead to another folder.
void requireFileName(const std::string& name, const std::string& file) {
    if (name != "." && name != ".." && name.find('/') == std::string::npos) return;
    throw Failure(fmt::format("'{}' names a table '{}', which cannot name a file.", file, name));
}

Tables tablesOf(const ordered_json& json, const std::string& file) {
    Tables tables;
    for (const auto& [name, rows] : json.items()) {
        requireFileName(name, file);
        tables.set(name, rowsOf(rows, file));
    }
    return tables;
}

ordered_json readJson(const std::string& file) {
    try {
        return ordered_json::parse(contentOf(file));
    } catch (const ordered_json::parse_error& error) {
        throw Failure(fmt::format("'{}' is no JSON: the error is at byte {}.", file, error.byte));
    } catch (const ordered_json::exception&) {
        throw Failure(fmt::format("'{}' holds a number that is out of range.", file));
    }
}

/// Follows one job of an exporter to its end.
class Job : public ZkMobileBackup::DlxExporterDelegate {
public:
    Job(DlxExporter& exporter, Context& context)
        : exporter_(exporter), interruption_(context.interruption), bar_(context, "Writing") {}

    void recoveryProcess(double process) override {
        bar_.show(process);
        // A stop reaches one file only, so every file of a batch is told.
        if (interruption_.requested()) exporter_.stopRecoveryBackupData();
    }

    void recoveryComplete(bool complete) override {
        done_ = complete;
        if (done_) ZkMobileBackup::MainQueue::stop();
    }

    void wait() {
        const auto stop = interruption_.onRequest([this] { exporter_.stopRecoveryBackupData(); });
        while (!done_) ZkMobileBackup::MainQueue::run();
    }

private:
    DlxExporter& exporter_;
    Interruption& interruption_;
    ProgressBar bar_;
    bool done_ = false;
};

void start(DlxExporter& exporter, const ordered_json& json, const Options& options) {
    if (json.is_object()) {
        exporter.recoveryBackupData(tablesOf(json, options.file), options.type, options.output);
    } else {
        exporter.recoveryBackupData(rowsOf(json, options.file), options.type, options.output);
    }
}

void writeJson(const std::vector<std::string>& paths) {
    JsonWriter json;
    json.beginObject();
    json.key("files");
    json.texts(paths);
    json.endObject();
    json.finish();
}

void run(const Options& options, Context& context) {
    const auto exporter = DlxExporter::init();
    exporter->setProfile(context.profile);
    {
        Job job(*exporter, context);
        exporter->setExporterDelegate(&job);
        start(*exporter, readJson(options.file), options);
        job.wait();
        exporter->setExporterDelegate(nullptr);
    }
    options.json ? writeJson(exporter->writtenPaths()) : printWrittenFiles(exporter->writtenPaths());
    // Ctrl-C also ends the program that packs a document; this is then no failure of its own.
    context.interruption.throwIfRequested();
    if (const std::string failure = exporter->firstFailure(); !failure.empty()) throw Failure(failure);
}

}  // namespace

Action setUpDocument(CLI::App& command, Context& context) {
    const auto options = std::make_shared<Options>();
    command.add_option("ROWS.json", options->file, "An array of objects for one document, or an object of such arrays")
        ->required();
    addOutputOption(command, options->output, "The document's path without extension, or a folder for several");
    addTypeOption(command, options->type);
    command.add_flag("--json", options->json, "Print the paths of the files as JSON");
    return [options, &context] { run(*options, context); };
}

}  // namespace zkmb
