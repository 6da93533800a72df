#include "ZkMobileBackup/domains/ZkMobileBackupFileDomain.h"

#include <fmt/format.h>
#include <new>
#include <utility>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "base/Text.h"
#include "platform/Files.h"
#include "platform/GlobalQueue.h"

namespace ZkMobileBackup {

namespace {

bool isFileName(const std::string& title) {
    constexpr std::string_view kNotInNames("/\0", 2);
    return title.find_first_of(kNotInNames) == std::string::npos;
}

}  // namespace

ZkMobileBackupFileDomain::ZkMobileBackupFileDomain() = default;

void ZkMobileBackupFileDomain::extractWithOutputPath(const std::string& outputPath, DlxExportType /*type*/,
                                                     ExportCallback callback) {
    setExportCallback(std::move(callback));
    forgetOutcome();
    submitJob(QueuePriority::kDefault, [this, self = shared_from_this(), path = absolutePath(outputPath)]() mutable {
        runExport(path) ? postExportCallback(kExportFinished, 1.0) : postStopped();
        letGo(std::move(self));
    });
}

/// Returns false when the host stopped it.
bool ZkMobileBackupFileDomain::runExport(const std::string& outputPath) {
    try {
        return exportRecords(markedRecords(), outputPath);
    } catch (const std::bad_alloc&) {
        // What was written until then stays, and the end is reported.
        noteFailure(fmt::format("There is not enough memory to write all files to '{}'.", outputPath));
        return true;
    }
}

/// Before the job is there: a host that asks at once must not get what an earlier export did.
void ZkMobileBackupFileDomain::forgetOutcome() {
    const std::lock_guard lock(outcomeMutex_);
    writtenPaths_.clear();
    firstFailure_.clear();
}

std::optional<std::string> ZkMobileBackupFileDomain::targetOf(const ZkMobileBackupAppDomainRecord& record,
                                                              std::string_view titleKey, const std::string& folder,
                                                              std::string_view extension) {
    const Value* entry = record.recordValueForKey(titleKey);
    const std::string* title = entry != nullptr ? entry->text() : nullptr;
    if (title != nullptr && isFileName(*title)) return joinedPath(folder, fmt::format("{}{}", *title, extension));
    noteFailure(fmt::format("Cannot write a file to '{}': a record has no title that a file can have.", folder));
    return std::nullopt;
}

void ZkMobileBackupFileDomain::noteWritten(const WrittenFile& file) {
    if (file.path.empty()) return noteFailure(file.failure);
    const std::lock_guard lock(outcomeMutex_);
    writtenPaths_.push_back(file.path);
}

void ZkMobileBackupFileDomain::noteFailure(const std::string& failure) {
    const std::lock_guard lock(outcomeMutex_);
    if (firstFailure_.empty()) firstFailure_ = failure;
}

std::vector<std::string> ZkMobileBackupFileDomain::writtenPaths() const {
    const std::lock_guard lock(outcomeMutex_);
    return writtenPaths_;
}

std::string ZkMobileBackupFileDomain::firstFailure() const {
    const std::lock_guard lock(outcomeMutex_);
    return firstFailure_;
}

}  // namespace ZkMobileBackup
