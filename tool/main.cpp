#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <fmt/format.h>

#include "base/Log.h"
#include "base/Version.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/text.h"

namespace zkmb {
namespace {

constexpr int kWrongUsage = 2;
constexpr std::size_t kMaxLogCharacters = 200;

struct Command {
    const char* name;
    const char* description;
    Action (*setUp)(CLI::App& command, Context& context);
};

constexpr Command kCommands[] = {
    {"list", "List the backups on this computer", setUpList},
    {"manifest", "Show which files a backup holds", setUpManifest},
    {"tables", "Recover the tables of a SQLite database", setUpTables},
    {"result", "Recover what an application keeps in its database", setUpResult},
    {"scan", "Find the application data in a backup and count its records", setUpScan},
    {"records", "Show the records of one domain of a backup", setUpRecords},
    {"export", "Write the records of a backup as documents", setUpExport},
    {"document", "Write rows from a JSON file as documents", setUpDocument},
};

void setUpLog(bool verbose) {
    ZkMobileBackup::setLogSink([verbose](std::string_view line) {
        if (verbose) writeDiagnostic(oneLine(line, kMaxLogCharacters));
    });
}

int run(const Action& action, const Context& context) {
    setUpLog(context.verbose);
    try {
        action();
        return EXIT_SUCCESS;
    } catch (const Failure& failure) {
        writeDiagnostic(failure.what());
    } catch (const std::exception& error) {
        writeDiagnostic(fmt::format("Unexpected failure: {}.", error.what()));
    }
    return EXIT_FAILURE;
}

int runCommandLine(int argc, char** argv) {
    Context context;
    CLI::App app("Recovers live and deleted data from the backups that a phone leaves on a computer.", "zkmb");
    app.require_subcommand(1)->fallthrough();
    app.set_version_flag("--version", fmt::format("zkmb {}", ZkMobileBackup::ZkMobileBackupVersionString));
    app.add_flag("--verbose", context.verbose, "Show the library's log on standard error");
    app.add_flag("--quiet", context.quiet, "Show no progress");

    Action chosen;
    for (const Command& command : kCommands) {
        CLI::App& subcommand = *app.add_subcommand(command.name, command.description);
        subcommand.callback([&chosen, action = command.setUp(subcommand, context)] { chosen = action; });
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == EXIT_SUCCESS ? EXIT_SUCCESS : kWrongUsage;
    }
    return run(chosen, context);
}

}  // namespace
}  // namespace zkmb

int main(int argc, char** argv) {
    return zkmb::runCommandLine(argc, argv);
}
