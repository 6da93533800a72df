#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

class FileDescriptor;
class UnpackTarget;
class ZipEntryReader;

/// Hears of the work of a ZipArchive and is asked by it, on the thread that uses the archive. It must not open or close
/// the archive from within a call.
class ZKMB_API ZipArchiveDelegate {
public:
    virtual ~ZipArchiveDelegate();

    // ErrorMessage:
    virtual void ErrorMessage(std::string_view /*message*/) {}
    // OverWriteOperation:
    /// Whether the file that stands at `path` is to be replaced.
    virtual bool OverWriteOperation(std::string_view /*path*/) { return true; }
};

/// Writes a zip archive, and unpacks one. An object has at most one archive open for each; opening another one closes
/// the one before. Belongs to one thread at a time; what is open is closed with the object.
///
/// Paths and names are UTF-8. A password is a text of ASCII characters, empty for none, and the encryption is the
/// traditional one of zip, which does not withstand a determined reader.
class ZKMB_API ZipArchive {
public:
    // init
    static std::shared_ptr<ZipArchive> init();
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    // delegate, setDelegate:
    /// Owned, unlike other delegates of this library; null at first.
    const std::shared_ptr<ZipArchiveDelegate>& delegate() const { return delegate_; }
    void setDelegate(std::shared_ptr<ZipArchiveDelegate> delegate) { delegate_ = std::move(delegate); }

    // CreateZipFile2:
    /// Opens a new archive for writing; a file that stands there is replaced. False when it cannot be written.
    bool CreateZipFile2(const std::string& path);
    // CreateZipFile2:Password:
    /// The same, with a password for the files that are added.
    bool CreateZipFile2(const std::string& path, const std::string& password);
    // addFileToZip:newname:
    /// Adds a file with its modification time, deflated, and encrypted when there is a password. The time is kept as
    /// local time in steps of two seconds, of the years 1980 to 2107. False without an archive that is being written,
    /// when the file cannot be read or has 4 GiB or more, or when the entry cannot be written.
    bool addFileToZip(const std::string& path, const std::string& newname);
    // CloseZipFile2
    /// Finishes the archive that is being written, and forgets the password. False when that failed or none was open.
    bool CloseZipFile2();

    // UnzipOpenFile:
    /// Opens an archive for reading. False when it is no archive, which one that has no entries may not be either.
    bool UnzipOpenFile(const std::string& path);
    // UnzipOpenFile:Password:
    /// The same, with a password for the encrypted entries.
    bool UnzipOpenFile(const std::string& path, const std::string& password);
    // UnzipFileTo:overWrite:
    /// Unpacks every entry into a folder, with modification times; missing folders are made. A file that exists is
    /// replaced when `overWrite` is set or OverWrite allows it, and stays otherwise. True when the last entry has been
    /// passed. An entry that cannot be opened, lacks its password or leads out of the folder, by its name or through a
    /// symbolic link, ends the work with false. Damaged content is reported and kept as far as it could be read; a file
    /// that cannot be written is named in the log; the work goes on behind either.
    bool UnzipFileTo(const std::string& path, bool overWrite);
    // UnzipCloseFile
    /// Closes the archive that is being read, and forgets the password. False only when that failed.
    bool UnzipCloseFile();

    // OutputErrorMessage:
    /// Passes a text to the delegate's ErrorMessage, where there is a delegate.
    void OutputErrorMessage(std::string_view message);
    // OverWrite:
    /// The delegate's OverWriteOperation; true without a delegate.
    bool OverWrite(std::string_view path);
    // Date1980
    /// The begin of 1980 in local time: no entry carries an earlier date.
    Date Date1980() const;

    // --- Additions of ours -------------------------------------------------------------------------------------------

    /// Why the last UnzipFileTo left files out or otherwise than they were packed: the first reason, "it is damaged."
    /// or a sentence that names the file that cannot be written. Empty when all is well. An entry that cannot be
    /// opened, be it for want of its password, counts as damage; so does a wrong checksum, which unpacking does not
    /// mind.
    const std::string& unzipFailure() const { return unzipFailure_; }

protected:
    ZipArchive();

private:
    struct CloseWriting {
        void operator()(void* archive) const;
    };
    struct CloseReading {
        void operator()(void* archive) const;
    };

    bool fail(std::string_view message);
    void noteUnzipFailure(std::string failure);
    void noteUnwritable(const std::string& path, int error);
    void copyContent(ZipEntryReader& entry, FileDescriptor& file, const std::string& path);
    bool unpackEntry(const std::string& folder, bool overWrite);
    void writeFile(ZipEntryReader& entry, const UnpackTarget& target);

    std::shared_ptr<ZipArchiveDelegate> delegate_;
    std::string password_;                         // of the archive opened next with one
    std::unique_ptr<void, CloseWriting> zipFile_;  // minizip's handles, null for none
    std::unique_ptr<void, CloseReading> unzFile_;
    std::size_t entryCount_ = 0;  // as the archive that is being read states it
    std::string unzipFailure_;
};

}  // namespace ZkMobileBackup
