#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"

#include <algorithm>
#include <new>
#include <utility>

#include "ZkMobileBackup/domains/TzProductName.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupMovieRecord.h"
#include "base/Log.h"
#include "base/Text.h"
#include "platform/FileCopy.h"
#include "platform/Files.h"
#include "platform/GlobalQueue.h"

namespace ZkMobileBackup {

namespace {

constexpr std::uint64_t kChunkSize = 4'000'000;  // bytes between two reports

/// The record's movie file; an empty text when it is no movie's.
std::string pathOf(const ZkMobileBackupAppDomainRecord& record) {
    const auto* movie = dynamic_cast<const ZkMobileBackupMovieRecord*>(&record);
    return movie != nullptr ? movie->moviePath() : "";
}

}  // namespace

/// How far an export has come.
struct ZkMobileBackupMovieDomain::CopiedBytes {
    explicit CopiedBytes(const Records& records) {
        for (const auto& record : records) total += fileSize(pathOf(*record));
    }
    double fraction() const {
        return total == 0 ? 0 : std::min(static_cast<double>(copied) / static_cast<double>(total), 1.0);
    }

    std::uint64_t total = 0;
    std::uint64_t copied = 0;
};

std::shared_ptr<ZkMobileBackupMovieDomain> ZkMobileBackupMovieDomain::initWithMovoes(std::vector<Dictionary> movoes) {
    return connected(std::shared_ptr<ZkMobileBackupMovieDomain>(new ZkMobileBackupMovieDomain(std::move(movoes))));
}

ZkMobileBackupMovieDomain::ZkMobileBackupMovieDomain(std::vector<Dictionary> movoes) : movoes_(std::move(movoes)) {}

void ZkMobileBackupMovieDomain::parserWithCallbackBlock(ParserCallback callback) {
    setParserCallback(std::move(callback));
    submitJob(QueuePriority::kDefault, [this, self = shared_from_this()]() mutable {
        runParse() ? callParserEndOffMainQueue() : postStopped();
        letGo(std::move(self));
    });
}

/// Returns false when the host stopped it.
bool ZkMobileBackupMovieDomain::runParse() {
    const std::lock_guard lock(parseMutex_);
    try {
        return makeRecords();
    } catch (const std::bad_alloc&) {
        // What was found until then stays, and the end is reported.
        writeLog("There is not enough memory for all movies of a backup.");
        return true;
    }
}

bool ZkMobileBackupMovieDomain::makeRecords() {
    std::size_t count = 0;
    for (const Dictionary& movie : movoes_) {
        if (auto record = ZkMobileBackupMovieRecord::initWithMovieInfo(movie)) records_.push_back(std::move(record));
        ++count;
        postParserCallback(kParserGoingOn, static_cast<double>(count) / static_cast<double>(movoes_.size()));
        if (parserStopped()) return false;
    }
    return true;
}

/// Hosts rely on this one call coming from the job's own thread: it must not go through the main queue.
void ZkMobileBackupMovieDomain::callParserEndOffMainQueue() {
    callParserCallback(kParserFinished, 1.0);
}

bool ZkMobileBackupMovieDomain::exportRecords(const Records& marked, const std::string& outputPath) {
    const std::string folder = joinedPath(outputPath, TzProductName);
    CopiedBytes bytes(marked);
    OutputPaths paths;
    for (const auto& record : marked) {
        const auto target = targetOf(*record, kMovieRecordTitle, folder, ".MOV");
        if (!target) continue;
        FileCopy copy(pathOf(*record), *target, paths);
        const bool goOn = !exportStopped() && (!copy.isOpen() || copyMovie(copy, bytes));
        noteWritten(goOn ? copy.finish() : copy.finishEarly());
        if (!goOn) return false;
    }
    return true;
}

/// Copies whole chunks and then the rest, which may be empty. Returns false when the host stopped it. A movie that
/// grows meanwhile is copied up to where it ends when the rest's turn comes, and counts as it was; one that becomes
/// shorter ends with the chunk that is not whole any more.
bool ZkMobileBackupMovieDomain::copyMovie(FileCopy& copy, CopiedBytes& bytes) {
    while (copy.left() >= kChunkSize) {
        const std::uint64_t copied = copy.copyNext(kChunkSize);
        reportCopied(bytes, copied);
        if (copied < kChunkSize) return true;
        if (exportStopped()) return false;
    }
    const std::uint64_t rest = copy.left();
    copy.copyRest();
    reportCopied(bytes, rest);
    return true;
}

void ZkMobileBackupMovieDomain::reportCopied(CopiedBytes& bytes, std::uint64_t count) {
    bytes.copied += count;
    postExportCallback(kExportGoingOn, bytes.fraction());
}

std::optional<std::string> ZkMobileBackupMovieDomain::exportName() const {
    return std::nullopt;
}

}  // namespace ZkMobileBackup
