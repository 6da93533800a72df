#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

struct WrittenFile;

/// A domain whose records are files of the backup, which it copies out itself: photos and movies. It may be parsed
/// again, and then has all its records once more. The output type of an export is not used.
class ZKMB_API ZkMobileBackupFileDomain : public ZkMobileBackupAppDomain {
public:
    // extractWithOutputPath:type:callbackBlock:
    /// Copies the records marked with `shouldRecovery` to files below outputPath/TzProductName; returns at once. The
    /// callback's stop flag ends the export without a last call, see setStoppedHandler; it stays set, and so ends every
    /// later export too, until the host clears it. A failure is not reported: see `firstFailure`.
    void extractWithOutputPath(const std::string& outputPath, DlxExportType type, ExportCallback callback) override;

    std::vector<std::string> writtenPaths() const override;
    std::string firstFailure() const override;

protected:
    ZkMobileBackupFileDomain();

    /// Writes the files of the marked records. Returns false when the host stopped it. `outputPath` is absolute.
    virtual bool exportRecords(const Records& marked, const std::string& outputPath) = 0;

    // For exportRecords.

    /// The file that a record asks for: its title with an extension, in a folder. A record without a title, or with one
    /// that leads into another folder or that no file can have, gets nothing and is a failure.
    std::optional<std::string> targetOf(const ZkMobileBackupAppDomainRecord& record, std::string_view titleKey,
                                        const std::string& folder, std::string_view extension);
    /// Notes a file that was written, or the failure.
    void noteWritten(const WrittenFile& file);
    /// An empty text is no failure.
    void noteFailure(const std::string& failure);

private:
    void forgetOutcome();
    bool runExport(const std::string& outputPath);

    mutable std::mutex outcomeMutex_;
    // Of the export started last; guarded by outcomeMutex_:
    std::vector<std::string> writtenPaths_;
    std::string firstFailure_;
};

}  // namespace ZkMobileBackup
