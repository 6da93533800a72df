#pragma once

#include <atomic>
#include <string>

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"
#include "tool/interruption.h"
#include "tool/progress_bar.h"

namespace zkmb {

struct Context;

/// Writes the marked records of one domain and follows this to its end. Ctrl-C stops it.
class Extraction : private ZkMobileBackup::DlxExporterDelegate {
public:
    Extraction(ZkMobileBackup::ZkMobileBackupAppDomain& domain, Context& context);
    ~Extraction() override;
    Extraction(const Extraction&) = delete;
    Extraction& operator=(const Extraction&) = delete;

    /// Returns when the last callback has come, nothing of the job being under way any more.
    void run(const std::string& folder, ZkMobileBackup::DlxExportType type);

private:
    void recoveryStart() override;
    void recoveryProcess(double process) override;
    void recoveryComplete(bool complete) override;

    void hear(bool ended, std::atomic<bool>& stop, double progress);
    void end();
    bool isOver() const { return ends_ > stoppedFiles_; }
    void requestStop(std::atomic<bool>& stop);

    ZkMobileBackup::ZkMobileBackupAppDomain& domain_;
    Interruption& interruption_;
    ProgressBar bar_;
    Interruption::Registration stopRequest_;
    int ends_ = 0;
    int stoppedFiles_ = 0;
};

}  // namespace zkmb
