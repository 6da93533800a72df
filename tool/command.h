#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "base/Profile.h"
#include "tool/interruption.h"

namespace zkmb {

/// What the command line says for every command.
struct Context {
    bool quiet = false;
    bool verbose = false;
    ZkMobileBackup::Profile profile = ZkMobileBackup::Profile::kStandard;
    Interruption interruption;
};

/// Runs a command after its arguments have been read. Throws Failure.
using Action = std::function<void()>;

// One function a command: declares its arguments and returns what it does. The context outlives the action.
Action setUpList(CLI::App& command, Context& context);
Action setUpManifest(CLI::App& command, Context& context);
Action setUpTables(CLI::App& command, Context& context);
Action setUpResult(CLI::App& command, Context& context);
Action setUpScan(CLI::App& command, Context& context);
Action setUpRecords(CLI::App& command, Context& context);
Action setUpExport(CLI::App& command, Context& context);
Action setUpDocument(CLI::App& command, Context& context);

}  // namespace zkmb
