#include "tool/extraction.h"

#include <cstdint>

#include "base/MainQueue.h"
#include "export/DlxExporter.h"
#include "tool/backup.h"
#include "tool/command.h"

namespace zkmb {

using ZkMobileBackup::DlxExportType;
using ZkMobileBackup::MainQueue;
using ZkMobileBackup::ZkMobileBackupAppDomain;

// The domain's callback is told of an end without being told of which; only the exporter's own delegate hears the end
// of a stopped file, which comes before the end of its job. So this listens in the domain's place and passes all on.
Extraction::Extraction(ZkMobileBackupAppDomain& domain, Context& context)
    : domain_(domain), interruption_(context.interruption), bar_(context, "Writing " + nameOf(domain)) {
    domain_.exporter()->setExporterDelegate(this);
    domain_.exporter()->setProfile(context.profile);
    domain_.setStoppedHandler([this] { end(); });
}

Extraction::~Extraction() {
    domain_.setStoppedHandler({});
    domain_.exporter()->setExporterDelegate(&domain_);
}

void Extraction::run(const std::string& folder, DlxExportType type) {
    domain_.extractWithOutputPath(folder, type,
                                  [this](std::int64_t ended, std::int64_t, std::atomic<bool>* stop, double progress) {
                                      hear(ended != 0, *stop, progress);
                                  });
    while (!isOver()) MainQueue::run();
}

void Extraction::recoveryStart() {
    domain_.recoveryStart();
}

void Extraction::recoveryProcess(double process) {
    domain_.recoveryProcess(process);
}

void Extraction::recoveryComplete(bool complete) {
    if (!complete) ++stoppedFiles_;
    domain_.recoveryComplete(complete);
}

void Extraction::hear(bool ended, std::atomic<bool>& stop, double progress) {
    bar_.show(progress);
    if (stopRequest_ == nullptr) stopRequest_ = interruption_.onRequest([this, &stop] { requestStop(stop); });
    if (ended) end();
}

void Extraction::end() {
    ++ends_;
    MainQueue::stop();
}

// Domains that write their files themselves look at the flag, the others are stopped through their exporter.
void Extraction::requestStop(std::atomic<bool>& stop) {
    stop = true;
    domain_.exporter()->stopRecoveryBackupData();
}

}  // namespace zkmb
