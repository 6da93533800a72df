#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/Api.h"
#include "base/Profile.h"
#include "base/Value.h"
#include "export/DlxExportType.h"

namespace ZkMobileBackup {

struct WrittenFile;

/// Hears of the work of one writer, on the thread on which the writer runs. ("extport" stands for export.)
class ZKMB_API FileCreatorDelegate {
public:
    virtual ~FileCreatorDelegate();

    // extportStart
    virtual void extportStart() {}
    // extportProcess:
    /// Fraction done of the whole batch, from 0 to 1.
    virtual void extportProcess(double /*process*/) {}
    // extportComplete:
    /// A writer passes false when it was stopped and left no file; it never passes true.
    virtual void extportComplete(bool /*complete*/) {}
};

/// Base of the document writers. A writer makes one file from one table, on the thread that calls startConvert, and is
/// released. Everything but the stop flag belongs to that thread.
class ZKMB_API FileCreator {
public:
    // init
    static std::shared_ptr<FileCreator> init();
    virtual ~FileCreator();
    FileCreator(const FileCreator&) = delete;
    FileCreator& operator=(const FileCreator&) = delete;

    // fileCreatorDelegate, setFileCreatorDelegate:
    FileCreatorDelegate* fileCreatorDelegate() const { return delegate_; }
    virtual void setFileCreatorDelegate(FileCreatorDelegate* delegate) { delegate_ = delegate; }

    // isStop, setIsStop:
    /// The request to stop, false at first. May be set from any thread at any time.
    bool isStop() const { return isStop_.load(std::memory_order_relaxed); }
    void setIsStop(bool stop) { isStop_.store(stop, std::memory_order_relaxed); }

    // index, setIndex:
    /// Position of the file in its batch, from 0.
    std::int64_t index() const { return index_; }
    virtual void setIndex(std::int64_t index) { index_ = index; }

    // count, setCount:
    /// Number of files in the batch; below 1 the file counts as the whole.
    std::int64_t count() const { return count_; }
    virtual void setCount(std::int64_t count) { count_ = count; }

    // startConvert
    /// Makes the file. The base makes none.
    virtual void startConvert();

    // extportStart, extportProcess:, extportComplete:
    /// Each calls the delegate's method of the same name, where there is a delegate.
    void extportStart();
    void extportProcess(double process);
    void extportComplete(bool complete);

    // stringValueFromObject:
    /// The text of a cell. A text stays as it is. Of an array, every text without illegal characters follows a line
    /// break ("  \r\n"), the first one too. Anything else gives "".
    std::string stringValueFromObject(const Value& object) const;

    // GetOutPutFile:
    /// The path itself when nothing stands there, else the first free one with "(0)", "(1)", ... before its extension.
    std::string GetOutPutFile(std::string_view path) const;

    // --- Additions of ours -------------------------------------------------------------------------------------------

    // profile, setProfile:
    /// The manner in which the document is written, kLegacy at first.
    Profile profile() const { return profile_; }
    virtual void setProfile(Profile profile) { profile_ = profile; }

    /// Where the file was written; empty as long as there is none.
    const std::string& writtenPath() const { return writtenPath_; }
    /// The first thing that failed; empty without a failure. A file may have been written all the same.
    const std::string& failure() const { return failure_; }
    /// Where a fraction of this file, from 0 to 1, lies in the whole batch.
    double fractionOfBatch(double fraction) const;

protected:
    FileCreator();

    /// Tells the delegate how far this file has come, `fraction` from 0 to 1 being put into its slice of the batch.
    void reportFraction(double fraction);

    /// The path at which a document of the format is to stand, its name being free.
    static std::string documentPath(const std::string& savePath, DlxExportType type);
    /// Writes the bytes to the first free name of the format after `savePath` and notes what became of it.
    void writeDocument(const std::string& savePath, DlxExportType type, std::string_view bytes);
    /// Moves a finished file of the same folder to the first free name after `path` and notes what became of it.
    void claimDocument(const std::string& temporaryPath, const std::string& path);
    /// Logs a failure, and keeps it when it is the first one; an empty text is none.
    void noteFailure(const std::string& failure);
    /// Keeps the failure of a writer that worked for this one, and has logged it, when it is the first one.
    void takeFailure(const FileCreator& writer);

private:
    void noteWritten(WrittenFile file);

    FileCreatorDelegate* delegate_ = nullptr;  // not owned
    std::atomic<bool> isStop_{false};
    std::int64_t index_ = 0;
    std::int64_t count_ = 0;
    Profile profile_ = Profile::kLegacy;
    std::string writtenPath_;
    std::string failure_;
};

}  // namespace ZkMobileBackup
