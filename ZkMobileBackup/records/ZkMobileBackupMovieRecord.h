#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

namespace ZkMobileBackup {

class Movie;

/// A movie file. Its value has the title (text), if the file has a name, then the duration (whole number, in units of
/// the movie's own: see Movie), the file's size in bytes (whole number), and the picture that is shown first under
/// kMovieRecordThumbnail, if there is one.
class ZKMB_API ZkMobileBackupMovieRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithMovieInfo:
    /// A record of the movie file that kRawDBdataKey names, titled by kRawDBNameKey. Null when it cannot be opened as a
    /// movie. Reads a limited part of the file; any thread.
    static std::shared_ptr<ZkMobileBackupMovieRecord> initWithMovieInfo(const Dictionary& info);
    // initWithDictionary:deleted:
    static std::shared_ptr<ZkMobileBackupMovieRecord> initWithDictionary(std::optional<Dictionary> row, bool deleted);

    // moviePath
    /// The movie's file; empty for a record that was made of a dictionary.
    const std::string& moviePath() const { return moviePath_; }

    // recordKeys
    /// Among them is kMovieRecordResolution, which no movie has a value for: hosts show that column, empty.
    static const RecordKeys* recordKeys();
    const RecordKeys* keysOfClass() const override;

    // Ours.
    /// The opened movie, as long as the record lives; null for a record that was made of a dictionary.
    const std::shared_ptr<const Movie>& movie() const { return movie_; }

protected:
    ZkMobileBackupMovieRecord(std::optional<Dictionary> row, bool deleted, std::shared_ptr<const Movie> movie = {},
                              std::string moviePath = {});

private:
    const std::shared_ptr<const Movie> movie_;
    const std::string moviePath_;
};

}  // namespace ZkMobileBackup
