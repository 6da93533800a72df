#include "export/ZipArchive.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <minizip/unzip.h>
#include <minizip/zip.h>
#include <sys/stat.h>
#include <utility>

#include "base/Log.h"
#include "base/Text.h"
#include "export/UnpackTarget.h"
#include "export/ZipEntryReader.h"
#include "export/ZipEntryWriter.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

constexpr const char* kEntryFailure = "Error occurs";
constexpr const char* kDamaged = "it is damaged.";

constexpr int kFirstYear = 1900;  // of std::tm

/// Entries of this size and above need fields that the plain zip format lacks.
constexpr std::size_t kSizeLimit = 0xFFFFFFFF;

/// A file's modification time as an entry has it; zeros when the file has none.
zip_fileinfo entryInfo(const std::string& path) {
    zip_fileinfo info{};
    struct stat status;
    std::tm fields{};
    tzset();  // localtime_r follows the zone setting only with it
    if (::stat(path.c_str(), &status) != 0 || localtime_r(&status.st_mtime, &fields) == nullptr) return info;
    info.tmz_date.tm_sec = static_cast<uInt>(fields.tm_sec);
    info.tmz_date.tm_min = static_cast<uInt>(fields.tm_min);
    info.tmz_date.tm_hour = static_cast<uInt>(fields.tm_hour);
    info.tmz_date.tm_mday = static_cast<uInt>(fields.tm_mday);
    info.tmz_date.tm_mon = static_cast<uInt>(fields.tm_mon);
    info.tmz_date.tm_year = static_cast<uInt>(fields.tm_year + kFirstYear);
    return info;
}

void setModificationTime(const FileDescriptor& file, std::time_t time) {
    const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, {.tv_sec = time, .tv_nsec = 0}};
    if (::futimens(file.get(), times) != 0) writeLog("Failed to set attributes");
}

}  // namespace

ZipArchiveDelegate::~ZipArchiveDelegate() = default;

void ZipArchive::CloseWriting::operator()(void* archive) const {
    zipClose(archive, nullptr);
}

void ZipArchive::CloseReading::operator()(void* archive) const {
    unzClose(archive);
}

std::shared_ptr<ZipArchive> ZipArchive::init() {
    return std::shared_ptr<ZipArchive>(new ZipArchive);
}

ZipArchive::ZipArchive() = default;
ZipArchive::~ZipArchive() = default;

bool ZipArchive::CreateZipFile2(const std::string& path) {
    zipFile_.reset();  // finished first: it may be the same file
    zipFile_.reset(zipOpen(path.c_str(), APPEND_STATUS_CREATE));
    return zipFile_ != nullptr;
}

bool ZipArchive::CreateZipFile2(const std::string& path, const std::string& password) {
    password_ = password;
    return CreateZipFile2(path);
}

bool ZipArchive::addFileToZip(const std::string& path, const std::string& newname) {
    if (!zipFile_) return false;
    const auto bytes = readFile(path, kSizeLimit - 1);
    return bytes && writeZipEntry(zipFile_.get(), {newname, entryInfo(path), *bytes}, password_);
}

bool ZipArchive::CloseZipFile2() {
    password_.clear();
    return zipFile_ && zipClose(zipFile_.release(), nullptr) == ZIP_OK;
}

bool ZipArchive::UnzipOpenFile(const std::string& path) {
    unzFile_.reset(unzOpen(path.c_str()));
    unz_global_info info{};
    unzGetGlobalInfo(unzFile_.get(), &info);
    entryCount_ = info.number_entry;
    return unzFile_ != nullptr;
}

bool ZipArchive::UnzipOpenFile(const std::string& path, const std::string& password) {
    password_ = password;
    return UnzipOpenFile(path);
}

bool ZipArchive::UnzipFileTo(const std::string& path, bool overWrite) {
    unzipFailure_.clear();
    // Without a first entry, opening the current one fails.
    if (unzGoToFirstFile(unzFile_.get()) != UNZ_OK) OutputErrorMessage("Failed");
    for (std::size_t passed = 1;; ++passed) {
        if (!unpackEntry(path, overWrite)) return false;
        // Before the stated number of entries a missing next one is damage: opening it fails.
        if (unzGoToNextFile(unzFile_.get()) != UNZ_OK && passed >= entryCount_) return true;
    }
}

/// Returns false when the work is to end.
bool ZipArchive::unpackEntry(const std::string& folder, bool overWrite) {
    ZipEntryReader entry(unzFile_.get());
    if (!entry.open()) return fail(kEntryFailure);
    if (!entry.readInfo()) return fail("Error occurs while getting file info");

    std::string name = entry.name();
    std::ranges::replace(name, '\\', '/');
    const bool isFolder = name.ends_with('/');
    if (!isValidUtf8(name) || !(isFolder || entry.unlock(password_))) return fail(kEntryFailure);

    const UnpackTarget target(folder, name);
    if (target.isRefused()) return fail(kEntryFailure);
    if (isFolder || (!overWrite && target.exists() && !OverWrite(target.path()))) return true;
    writeFile(entry, target);
    return true;
}

void ZipArchive::writeFile(ZipEntryReader& entry, const UnpackTarget& target) {
    FileDescriptor file = target.open();
    if (!file.isOpen()) return noteUnwritable(target.path(), errno);
    copyContent(entry, file, target.path());
    setModificationTime(file, entry.modificationTime());
}

/// Copies what can be read of an entry, as far as it can be written.
void ZipArchive::copyContent(ZipEntryReader& entry, FileDescriptor& file, const std::string& path) {
    std::array<std::uint8_t, 4096> chunk;
    int count = 0;
    while ((count = entry.read(chunk)) > 0) {
        if (!file.write({reinterpret_cast<const char*>(chunk.data()), static_cast<std::size_t>(count)})) {
            return noteUnwritable(path, errno);
        }
    }
    if (count < 0) OutputErrorMessage("Failed to reading zip file");
    if (count < 0 || !entry.checksumMatches()) noteUnzipFailure(kDamaged);
}

void ZipArchive::noteUnwritable(const std::string& path, int error) {
    const std::string failure = writeFailure(path, error);
    writeLog(failure);
    noteUnzipFailure(failure);
}

void ZipArchive::noteUnzipFailure(std::string failure) {
    if (unzipFailure_.empty()) unzipFailure_ = std::move(failure);
}

bool ZipArchive::fail(std::string_view message) {
    OutputErrorMessage(message);
    noteUnzipFailure(kDamaged);
    return false;
}

bool ZipArchive::UnzipCloseFile() {
    password_.clear();
    return !unzFile_ || unzClose(unzFile_.release()) == UNZ_OK;
}

void ZipArchive::OutputErrorMessage(std::string_view message) {
    if (delegate_) delegate_->ErrorMessage(message);
}

bool ZipArchive::OverWrite(std::string_view path) {
    return !delegate_ || delegate_->OverWriteOperation(path);
}

Date ZipArchive::Date1980() const {
    std::tm fields{};
    fields.tm_year = 1980 - kFirstYear;
    fields.tm_mday = 1;
    fields.tm_isdst = -1;
    return {static_cast<double>(std::mktime(&fields))};
}

}  // namespace ZkMobileBackup
