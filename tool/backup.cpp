#include "tool/backup.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "base/MainQueue.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/files.h"
#include "tool/output.h"
#include "tool/progress_bar.h"

namespace zkmb {
namespace {

using ZkMobileBackup::MainQueue;
using ZkMobileBackup::ZkiTunesBackupSnapshot;
using ZkMobileBackup::ZkMobileBackupAppDomain;
using ZkMobileBackup::ZkMobileBackupParser;

std::string within(const std::string& folder, const char* name) {
    return std::filesystem::path(folder) / name;
}

void warnOfForeignManifest(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) || beginsWith(path, "mbdb")) return;
    writeDiagnostic(fmt::format("Warning: '{}' does not begin like a manifest.", path));
}

bool hasName(const Domain& domain, const std::vector<std::string>& names) {
    return std::ranges::find(names, nameOf(*domain)) != names.end();
}

void requireKnown(const std::string& name, const Domains& domains) {
    if (std::ranges::any_of(domains, [&](const Domain& domain) { return nameOf(*domain) == name; })) return;
    throw Failure(fmt::format("The backup has no domain named '{}'.", name));
}

/// Follows the parse of one domain to its end.
class Parse {
public:
    Parse(ZkMobileBackupAppDomain& domain, Context& context)
        : domain_(domain), interruption_(context.interruption), bar_(context, "Reading " + nameOf(domain)) {
        domain_.setStoppedHandler([this] { end(); });
    }
    ~Parse() { domain_.setStoppedHandler({}); }
    Parse(const Parse&) = delete;
    Parse& operator=(const Parse&) = delete;

    void run() {
        domain_.parserWithCallbackBlock(
            [this](std::int64_t state, std::atomic<bool>* stop, double progress) { hear(state, *stop, progress); });
        while (!done_) MainQueue::run();
        // An end that came from another thread may have overtaken reports to this object.
        MainQueue::runUntilIdle();
    }

private:
    void hear(std::int64_t state, std::atomic<bool>& stop, double progress) {
        if (state == kFinished) return end();
        bar_.show(progress);
        if (stopRequest_ == nullptr) stopRequest_ = interruption_.onRequest([this, &stop] { requestStop(stop); });
    }

    void end() {
        // Nothing of this object may be touched once the flag is set: the call may come from another thread.
        done_ = true;
        MainQueue::stop();
    }

    void requestStop(std::atomic<bool>& stop) {
        stop = true;
        // The domain looks at its flag when progress is reported, the engine looks at its own all the time.
        if (const auto engine = domain_.parser()) engine->setBStop(true);
    }

    ZkMobileBackupAppDomain& domain_;
    Interruption& interruption_;
    ProgressBar bar_;
    Interruption::Registration stopRequest_;
    std::atomic<bool> done_{false};
};

}  // namespace

std::shared_ptr<ZkiTunesBackupSnapshot> openBackup(const std::string& folder) {
    requireReadableFolder(folder);
    warnOfForeignManifest(within(folder, "Manifest.mbdb"));
    return ZkiTunesBackupSnapshot::initWithUDID(std::nullopt, std::nullopt, std::nullopt, 0, std::nullopt, folder);
}

void requireManifest(const std::string& folder) {
    requireReadableFile(within(folder, "Manifest.mbdb"));
    std::error_code error;
    const std::string index = within(folder, "Manifest.mbdx");
    if (std::filesystem::exists(std::filesystem::symlink_status(index, error))) requireReadableFile(index);
}

std::shared_ptr<ZkMobileBackupParser> scanBackup(const std::string& folder, Context& context,
                                                 const ScanListener& listener) {
    auto parser = ZkMobileBackupParser::initWithBackupSnapshot(openBackup(folder));
    ProgressBar bar(context, "Scanning");
    parser->parserSnapshotWithCallbackBlock(
        [&](std::int64_t state, const Domain& domain, std::atomic<bool>*, double progress) {
            bar.show(progress);
            if (listener) listener(state, domain, progress);
        });
    return parser;
}

void parseDomain(ZkMobileBackupAppDomain& domain, Context& context) {
    Parse(domain, context).run();
}

std::string nameOf(const ZkMobileBackupAppDomain& domain) {
    return domain.exportName().value_or(kMovieName);
}

Domains domainsNamed(const Domains& domains, const std::vector<std::string>& names) {
    if (names.empty()) return domains;
    for (const std::string& name : names) requireKnown(name, domains);
    Domains chosen;
    std::ranges::copy_if(domains, std::back_inserter(chosen), [&](const Domain& d) { return hasName(d, names); });
    return chosen;
}

std::size_t deletedCount(const ZkMobileBackupAppDomain& domain) {
    return static_cast<std::size_t>(
        std::ranges::count_if(domain.records(), [](const auto& record) { return record->isDeleted(); }));
}

}  // namespace zkmb
