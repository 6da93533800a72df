#pragma once

#include <cstdint>
#include <mutex>

#include "ZkMobileBackup/domains/ZkMobileBackupFileDomain.h"

namespace ZkMobileBackup {

class FileCopy;

/// The movies of a backup. An export copies the marked ones to outputPath/TzProductName, a folder that must be there,
/// under their titles with the extension "MOV"; a title that is taken gets a number. A movie that cannot be read leaves
/// an empty file there. An export that is stopped leaves what it has copied of a movie, and `firstFailure` names that
/// file, unless something failed before.
class ZKMB_API ZkMobileBackupMovieDomain : public ZkMobileBackupFileDomain {
public:
    // initWithMovoes: ("movoes" stands for movies)
    /// Dictionaries with kRawDBNameKey and kRawDBdataKey (path).
    static std::shared_ptr<ZkMobileBackupMovieDomain> initWithMovoes(std::vector<Dictionary> movoes);

    // parserWithCallbackBlock:
    /// Makes a record of every file that can be opened as a movie, on the default queue; returns at once. Through the
    /// main queue comes (1, stop, progress) for each file; the end, (3, stop, 1.0), comes on the thread of the job,
    /// unlike every other domain's, and may overtake calls that still wait in the main queue. Once `*stop` is set the
    /// parse ends with the file in hand and without a last call, see setStoppedHandler. A second parse appends all
    /// records again, after the first.
    void parserWithCallbackBlock(ParserCallback callback) override;
    // exportName: nothing, movies have no folder of their own.
    std::optional<std::string> exportName() const override;

    // --- Additions of ours -------------------------------------------------------------------------------------------

    std::string_view className() const override { return "ZkMobileBackupMovieDomain"; }
    const std::vector<Dictionary>& movoes() const { return movoes_; }

protected:
    explicit ZkMobileBackupMovieDomain(std::vector<Dictionary> movoes);

    bool exportRecords(const Records& marked, const std::string& outputPath) override;

private:
    struct CopiedBytes;

    bool runParse();
    bool makeRecords();
    void callParserEndOffMainQueue();
    bool copyMovie(FileCopy& copy, CopiedBytes& bytes);
    void reportCopied(CopiedBytes& bytes, std::uint64_t count);

    const std::vector<Dictionary> movoes_;
    std::mutex parseMutex_;  // one parse after the other: each appends to the records
};

}  // namespace ZkMobileBackup
