#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <fmt/format.h>

#include "base/Log.h"
#include "base/Termination.h"
#include "base/Version.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/profile.h"
#include "tool/text.h"

namespace zkmb {
namespace {

constexpr int kWrongUsage = 2;
constexpr std::size_t kMaxLogCharacters = 200;
constexpr const char* kCommonOptions = "Options of every command";

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
    // Whoever lacks a folder of its own says so in its failure; that ends the command as any failure does.
    ZkMobileBackup::setTerminationHandler([] {});
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

void addCommonOptions(CLI::App& app, Context& context) {
    addProfileOption(app, kCommonOptions, context.profile);
    app.add_flag("--verbose", context.verbose, "Show the library's log on standard error")->group(kCommonOptions);
    app.add_flag("--quiet", context.quiet, "Show no progress")->group(kCommonOptions);
}

/// They may stand before or behind the command, so the help on a command shows them too.
std::string helpOnCommonOptions(const CLI::App& app) {
    const auto isCommon = [](const CLI::Option* option) { return option->get_group() == kCommonOptions; };
    return CLI::Formatter().make_group(kCommonOptions, false, app.get_options(isCommon));
}

/// Prints the help that was asked for, or what is wrong with the arguments.
int endOfParse(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == EXIT_SUCCESS) return app.exit(error);
    writeDiagnostic(fmt::format("{} (see --help).", error.what()));
    return kWrongUsage;
}

int runCommandLine(int argc, char** argv) {
    Context context;
    CLI::App app("Recovers live and deleted data from the backups that a phone leaves on a computer.", "zkmb");
    app.require_subcommand(1)->fallthrough();
    app.set_version_flag("--version", fmt::format("zkmb {}", ZkMobileBackup::ZkMobileBackupVersionString));
    addCommonOptions(app, context);

    Action chosen;
    for (const Command& command : kCommands) {
        CLI::App& subcommand = *app.add_subcommand(command.name, command.description);
        subcommand.footer([&app] { return helpOnCommonOptions(app); });
        subcommand.callback([&chosen, action = command.setUp(subcommand, context)] { chosen = action; });
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return endOfParse(app, error);
    }
    return run(chosen, context);
}

}  // namespace
}  // namespace zkmb

int main(int argc, char** argv) {
    return zkmb::runCommandLine(argc, argv);
}
