#include "export/DlxExporter.h"

#include <algorithm>
#include <utility>

#include "base/MainQueue.h"
#include "base/Text.h"
#include "export/DocxCreator.h"
#include "export/HtmlCreator.h"
#include "export/NumbersCreator.h"
#include "export/PagesCreator.h"
#include "export/XlsxCreater.h"
#include "platform/Files.h"
#include "platform/GlobalQueue.h"

namespace ZkMobileBackup {

/// One request to export. Its outcome is guarded by the exporter's mutex.
struct DlxExporter::Job {
    const DlxExportType type;
    const std::string path;  // absolute
    const Profile profile;
    std::vector<std::string> writtenPaths;
    std::string firstFailure;
};

/// A format is added by one method that makes its writer and one row of the table below.
struct DlxExporter::Writer {
    DlxExportType type;
    std::shared_ptr<FileCreator> (DlxExporter::*make)(Rows rows, std::string savePath) const;
};

const DlxExporter::Writer DlxExporter::kWriters[] = {
    {DlxExportType::kHtml, &DlxExporter::htmlExporterWithData},
    {DlxExportType::kDocx, &DlxExporter::docxExporterWithData},
    {DlxExportType::kXlsx, &DlxExporter::xlsxExporterWithData},
    {DlxExportType::kNumbers, &DlxExporter::numbersExporterWithData},
    {DlxExportType::kPages, &DlxExporter::pagesExporterWithData},
};

DlxExporterDelegate::~DlxExporterDelegate() = default;

std::shared_ptr<DlxExporter> DlxExporter::init() {
    return std::shared_ptr<DlxExporter>(new DlxExporter);
}

DlxExporter::DlxExporter() = default;
DlxExporter::~DlxExporter() = default;

void DlxExporter::setIsStop(bool stop) {
    const std::lock_guard lock(mutex_);
    isStop_.store(stop, std::memory_order_relaxed);
    if (currentCreator_) currentCreator_->setIsStop(stop);
}

void DlxExporter::stopRecoveryBackupData() {
    setIsStop(true);
}

void DlxExporter::recoveryBackupData(Rows rows, DlxExportType outputType, const std::string& outputPath) {
    startJob(outputType, outputPath, [this, rows = std::move(rows)](Job& job) { runSingle(job, rows); });
}

void DlxExporter::recoveryBackupData(Tables data, DlxExportType outputType, const std::string& outputDirPath) {
    startJob(outputType, outputDirPath, [this, data = std::move(data)](Job& job) { runBatch(job, data); });
}

void DlxExporter::startJob(DlxExportType type, const std::string& path, std::function<void(Job& job)> run) {
    const auto job = std::make_shared<Job>(Job{type, absolutePath(path), profile(), {}, {}});
    std::shared_ptr<const void> owner;
    {
        const std::lock_guard lock(mutex_);
        lastJob_ = job;
        owner = owner_.lock();
    }
    auto work = [self = shared_from_this(), owner = std::move(owner), job, run = std::move(run)]() mutable {
        run(*job);
        // The job's last callback is posted by now; whoever it needs is let go behind it.
        MainQueue::post([self = std::move(self), owner = std::move(owner)] {});
    };
    submitJob(QueuePriority::kDefault, std::move(work));
}

void DlxExporter::runSingle(Job& job, const Rows& rows) {
    extportStart();
    if (rows.empty()) return extportComplete(true);
    makeFolder(job, std::string(pathWithoutLastComponent(job.path)));
    // Without a writer the job ends in silence and must not complete: a host takes completion for work done.
    if (!writeFile(job, rows, job.path, 0, 1)) return;
    extportComplete(true);
}

void DlxExporter::runBatch(Job& job, const Tables& data) {
    extportStart();
    if (data.empty()) return extportComplete(true);
    makeFolder(job, job.path);
    // The exporter's own stop flag is not asked: a stop ends one file, the next one is written.
    for (std::size_t i = 0; i < data.size(); ++i) {
        const std::string path = joinedPath(job.path, data[i].name + "_ExportFile");
        if (!writeFile(job, data[i].rows, path, i, data.size())) break;
    }
    extportComplete(true);
}

void DlxExporter::makeFolder(Job& job, const std::string& folder) {
    if (!isDirectory(folder)) noteFailure(job, createDirectories(folder));
}

/// Returns false when there is no writer for the job's type.
bool DlxExporter::writeFile(Job& job, const Rows& rows, const std::string& path, std::size_t index, std::size_t count) {
    const Writer* writer = writerOf(job.type);
    if (writer == nullptr) {
        noteFailure(job, "There is no writer for documents of this type: " + path);
        return false;
    }
    const std::shared_ptr<FileCreator> creator = (this->*writer->make)(rows, path);
    creator->setProfile(job.profile);
    creator->setFileCreatorDelegate(this);
    creator->setIndex(static_cast<std::int64_t>(index));
    creator->setCount(static_cast<std::int64_t>(count));
    setCurrentCreator(creator);
    creator->startConvert();
    noteOutcome(job, *creator);
    setCurrentCreator(nullptr);
    return true;
}

void DlxExporter::setCurrentCreator(std::shared_ptr<FileCreator> creator) {
    const std::lock_guard lock(mutex_);
    currentCreator_.swap(creator);
}

void DlxExporter::noteFailure(Job& job, const std::string& failure) {
    const std::lock_guard lock(mutex_);
    if (job.firstFailure.empty()) job.firstFailure = failure;
}

void DlxExporter::noteOutcome(Job& job, const FileCreator& creator) {
    noteFailure(job, creator.failure());
    if (creator.writtenPath().empty()) return;
    const std::lock_guard lock(mutex_);
    job.writtenPaths.push_back(creator.writtenPath());
}

std::shared_ptr<FileCreator> DlxExporter::htmlExporterWithData(Rows data, std::string outputPath) const {
    return HtmlCreator::initWithDictionary(std::move(data), std::move(outputPath));
}

std::shared_ptr<FileCreator> DlxExporter::docxExporterWithData(Rows data, std::string outputPath) const {
    return DocxCreator::initWithDictionary(std::move(data), std::move(outputPath));
}

std::shared_ptr<FileCreator> DlxExporter::xlsxExporterWithData(Rows data, std::string outputPath) const {
    return XlsxCreater::initWithDictionary(std::move(data), std::move(outputPath));
}

std::shared_ptr<FileCreator> DlxExporter::numbersExporterWithData(Rows data, std::string outputPath) const {
    return NumbersCreator::initWithDictionary(std::move(data), std::move(outputPath));
}

std::shared_ptr<FileCreator> DlxExporter::pagesExporterWithData(Rows data, std::string outputPath) const {
    return PagesCreator::initWithDictionary(std::move(data), std::move(outputPath));
}

std::string DlxExporter::GetOutPutFile(std::string_view path) const {
    return freeOutputPath(std::string(path));
}

void DlxExporter::extportStart() {
    MainQueue::post([self = shared_from_this()] {
        if (DlxExporterDelegate* delegate = self->exporterDelegate()) delegate->recoveryStart();
    });
}

void DlxExporter::extportProcess(double process) {
    MainQueue::post([self = shared_from_this(), process] {
        if (DlxExporterDelegate* delegate = self->exporterDelegate()) delegate->recoveryProcess(process);
    });
}

void DlxExporter::extportComplete(bool complete) {
    MainQueue::post([self = shared_from_this(), complete] {
        if (DlxExporterDelegate* delegate = self->exporterDelegate()) delegate->recoveryComplete(complete);
    });
}

const DlxExporter::Writer* DlxExporter::writerOf(DlxExportType type) {
    const auto* found = std::find_if(std::begin(kWriters), std::end(kWriters),
                                     [type](const Writer& writer) { return writer.type == type; });
    return found == std::end(kWriters) ? nullptr : found;
}

bool DlxExporter::canWrite(DlxExportType type) {
    return writerOf(type) != nullptr;
}

std::vector<std::string> DlxExporter::writtenPaths() const {
    const std::lock_guard lock(mutex_);
    return lastJob_ ? lastJob_->writtenPaths : std::vector<std::string>();
}

std::string DlxExporter::firstFailure() const {
    const std::lock_guard lock(mutex_);
    return lastJob_ ? lastJob_->firstFailure : std::string();
}

void DlxExporter::setOwner(std::weak_ptr<const void> owner) {
    const std::lock_guard lock(mutex_);
    owner_ = std::move(owner);
}

}  // namespace ZkMobileBackup
