#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/Api.h"
#include "export/DlxExportType.h"
#include "export/ExportRows.h"
#include "export/FileCreator.h"

namespace ZkMobileBackup {

/// Hears of export jobs, on the main queue.
class ZKMB_API DlxExporterDelegate {
public:
    virtual ~DlxExporterDelegate();

    // recoveryStart
    virtual void recoveryStart() {}
    // recoveryProcess:
    /// Fraction done of the whole job, from 0 to 1.
    virtual void recoveryProcess(double /*process*/) {}
    // recoveryComplete:
    /// True ends a job, whether its files could be written or not. False comes before it for a file that was stopped.
    virtual void recoveryComplete(bool /*complete*/) {}
};

/// Writes tables of rows as documents, each job on the global queue of default priority. Start, progress and
/// completion reach the delegate through the main queue, in this order. A job keeps its exporter alive until its last
/// callback has been delivered. All methods may be called from any thread.
class ZKMB_API DlxExporter : public FileCreatorDelegate, public std::enable_shared_from_this<DlxExporter> {
public:
    // init
    static std::shared_ptr<DlxExporter> init();
    ~DlxExporter() override;
    DlxExporter(const DlxExporter&) = delete;
    DlxExporter& operator=(const DlxExporter&) = delete;

    // exporterDelegate, setExporterDelegate:
    DlxExporterDelegate* exporterDelegate() const { return delegate_.load(); }
    void setExporterDelegate(DlxExporterDelegate* delegate) { delegate_.store(delegate); }

    // isStop, setIsStop:
    /// The last stop request, false at first; nothing resets it. Setting it reaches the file that is being written at
    /// that moment, and no later one.
    bool isStop() const { return isStop_.load(std::memory_order_relaxed); }
    void setIsStop(bool stop);
    // stopRecoveryBackupData
    /// Stops the file that is being written; the files behind it in a batch are written all the same.
    void stopRecoveryBackupData();

    // recoveryBackupData:outputType:outputPath:
    /// Writes one document; returns at once. `outputPath` has no extension; its folder is made where it is missing.
    /// Without rows no file is written and the job completes. A type that nobody can write ends the job without any
    /// call after recoveryStart.
    void recoveryBackupData(Rows rows, DlxExportType outputType, const std::string& outputPath);
    // recoveryBackupData:outputType:outputDirPath:
    /// Writes one document a table, "<name>_ExportFile", into a folder that is made where it is missing; returns at
    /// once.
    void recoveryBackupData(Tables data, DlxExportType outputType, const std::string& outputDirPath);

    // htmlExporterWithData:outputPath:
    /// A writer of HTML; `outputPath` has no extension.
    std::shared_ptr<FileCreator> htmlExporterWithData(Rows data, std::string outputPath) const;
    // docxExporterWithData:outputPath:, xlsxExporterWithData:outputPath:, numbersExporterWithData:outputPath:,
    // pagesExporterWithData:outputPath:
    /// Writers of the other formats, likewise.
    std::shared_ptr<FileCreator> docxExporterWithData(Rows data, std::string outputPath) const;
    std::shared_ptr<FileCreator> xlsxExporterWithData(Rows data, std::string outputPath) const;
    std::shared_ptr<FileCreator> numbersExporterWithData(Rows data, std::string outputPath) const;
    std::shared_ptr<FileCreator> pagesExporterWithData(Rows data, std::string outputPath) const;

    // GetOutPutFile:
    /// The path itself when nothing stands there, else the first free one with "(0)", "(1)", ... before its extension.
    std::string GetOutPutFile(std::string_view path) const;

    // extportStart, extportProcess:, extportComplete:
    /// Each posts one call of the delegate to the main queue: recoveryStart, recoveryProcess, recoveryComplete.
    void extportStart() override;
    void extportProcess(double process) override;
    void extportComplete(bool complete) override;

    // --- Additions of ours -------------------------------------------------------------------------------------------

    /// Whether documents of this type can be written.
    static bool canWrite(DlxExportType type);

    // profile, setProfile:
    /// The manner in which documents are written, kLegacy at first. Meant for the jobs that are started later.
    Profile profile() const { return profile_.load(std::memory_order_relaxed); }
    void setProfile(Profile profile) { profile_.store(profile, std::memory_order_relaxed); }

    /// The files that the job started last has written so far, in the order of writing.
    std::vector<std::string> writtenPaths() const;
    /// The first failure of the job started last, as a sentence that names the file or folder; empty without one.
    std::string firstFailure() const;

    /// Every job started from now on keeps `owner` alive until its last callback has been delivered. Meant for the
    /// delegate, when it is the one who owns the exporter.
    void setOwner(std::weak_ptr<const void> owner);

protected:
    DlxExporter();

private:
    struct Job;
    struct Writer;
    static const Writer kWriters[];
    static const Writer* writerOf(DlxExportType type);

    void startJob(DlxExportType type, const std::string& path, std::function<void(Job& job)> run);
    void runSingle(Job& job, const Rows& rows);
    void runBatch(Job& job, const Tables& data);
    void makeFolder(Job& job, const std::string& folder);
    bool writeFile(Job& job, const Rows& rows, const std::string& path, std::size_t index, std::size_t count);
    void setCurrentCreator(std::shared_ptr<FileCreator> creator);
    void noteFailure(Job& job, const std::string& failure);
    void noteOutcome(Job& job, const FileCreator& creator);

    std::atomic<DlxExporterDelegate*> delegate_{nullptr};  // not owned
    std::atomic<bool> isStop_{false};
    std::atomic<Profile> profile_{Profile::kLegacy};

    mutable std::mutex mutex_;
    // Guarded by mutex_:
    std::shared_ptr<FileCreator> currentCreator_;  // null between files
    std::shared_ptr<Job> lastJob_;
    std::weak_ptr<const void> owner_;
};

}  // namespace ZkMobileBackup
