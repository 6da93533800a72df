#pragma once

#include <string>
#include <vector>

#include "export/DlxExportType.h"

namespace CLI {
class App;
}

namespace zkmb {

/// Declares the option --output of a command; `path` receives its value, which is never empty.
void addOutputOption(CLI::App& command, std::string& path, const std::string& description);

/// Declares the option --type of a command; `type` receives its value.
void addTypeOption(CLI::App& command, ZkMobileBackup::DlxExportType& type);

/// Prints the paths of the files that were written, then their number.
void printWrittenFiles(const std::vector<std::string>& paths);

}  // namespace zkmb
