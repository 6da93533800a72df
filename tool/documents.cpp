#include "tool/documents.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <climits>
#include <fmt/format.h>
#include <iterator>
#include <string>

#include "tool/output.h"
#include "tool/text.h"

namespace zkmb {

using ZkMobileBackup::DlxExportType;

void addOutputOption(CLI::App& command, std::string& path, const std::string& description) {
    const auto complaint = [](const std::string& value) {
        return std::string(value.empty() ? "The path is empty" : "");
    };
    command.add_option("--output", path, description)->required()->check(CLI::Validator(complaint, ""));
}

void addTypeOption(CLI::App& command, DlxExportType& type) {
    std::vector<std::string> names;
    std::ranges::transform(ZkMobileBackup::kExportFormats, std::back_inserter(names),
                           [](const auto& format) { return std::string(format.extension); });
    const auto choose = [&type](const std::string& name) {
        for (const auto& format : ZkMobileBackup::kExportFormats) {
            if (name == format.extension) type = format.type;
        }
    };
    command.add_option_function<std::string>("--type", choose, "Type of the documents")
        ->required()
        ->type_name(fmt::format("{}", fmt::join(names, "|")))
        ->check(CLI::IsMember(names).description(""));
}

void printWrittenFiles(const std::vector<std::string>& paths) {
    std::string text;
    for (const std::string& path : paths) text += oneLine(path, PATH_MAX) + "\n";
    writeOutput(fmt::format("{}{} {} written\n", text, paths.size(), paths.size() == 1 ? "file" : "files"));
}

}  // namespace zkmb
