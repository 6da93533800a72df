#include "ZkMobileBackup/records/ZkMobileBackupMovieRecord.h"

#include <utility>

#include "ZkMobileBackup/records/InfoKeys.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"
#include "platform/Files.h"
#include "platform/Movies.h"

namespace ZkMobileBackup {

namespace {

Dictionary valueOf(const Movie& movie, const std::string& path, const std::string* title) {
    Dictionary value;
    if (title != nullptr) value.set(kMovieRecordTitle, *title);
    value.set(kMovieRecordDuration, movie.duration());
    value.set(kMovieRecordSize, fileSize(path));
    if (auto poster = movie.posterImage()) value.set(kMovieRecordThumbnail, std::move(poster));
    return value;
}

}  // namespace

ZkMobileBackupMovieRecord::ZkMobileBackupMovieRecord(std::optional<Dictionary> row, bool deleted,
                                                     std::shared_ptr<const Movie> movie, std::string moviePath)
    : ZkMobileBackupAppDomainRecord(std::move(row), deleted),
      movie_(std::move(movie)),
      moviePath_(std::move(moviePath)) {}

std::shared_ptr<ZkMobileBackupMovieRecord> ZkMobileBackupMovieRecord::initWithMovieInfo(const Dictionary& info) {
    const std::string* path = info.text(kRawDBdataKey);
    auto movie = path != nullptr ? movieOfFile(*path) : nullptr;
    if (movie == nullptr) return nullptr;
    Dictionary value = valueOf(*movie, *path, info.text(kRawDBNameKey));
    return makeRecord<ZkMobileBackupMovieRecord>(std::move(value), false, std::move(movie), *path);
}

std::shared_ptr<ZkMobileBackupMovieRecord> ZkMobileBackupMovieRecord::initWithDictionary(std::optional<Dictionary> row,
                                                                                         bool deleted) {
    return makeRecord<ZkMobileBackupMovieRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupMovieRecord::recordKeys() {
    static const RecordKeys keys{kMovieRecordTitle, kMovieRecordDuration, kMovieRecordResolution, kMovieRecordSize};
    return &keys;
}

const RecordKeys* ZkMobileBackupMovieRecord::keysOfClass() const {
    return recordKeys();
}

}  // namespace ZkMobileBackup
