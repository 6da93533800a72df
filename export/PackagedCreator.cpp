#include "export/PackagedCreator.h"

#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <mutex>
#include <utility>

#include "base/Resources.h"
#include "base/Termination.h"
#include "base/Text.h"
#include "export/PackageFormat.h"
#include "export/ZipArchive.h"
#include "export/progress.h"
#include "platform/FileLock.h"
#include "platform/Files.h"
#include "platform/Process.h"

namespace ZkMobileBackup {

namespace {

/// Held by the one of a format's writers that uses the stage folder.
std::mutex& turnOn(DlxExportType type) {
    static std::array<std::mutex, kExportFormats.size()>& turns = *new std::array<std::mutex, kExportFormats.size()>;
    return turns[static_cast<std::size_t>(type)];
}

/// Unpacks an archive. Returns an empty text, or why files are missing or damaged.
std::string unpackFailure(const std::string& path, const std::string& folder) {
    if (!entryExists(path)) return "it is missing.";
    const auto archive = ZipArchive::init();
    archive->UnzipOpenFile(path);
    archive->UnzipFileTo(folder, true);
    return archive->unzipFailure();
}

}  // namespace

PackagedCreator::PackagedCreator(const PackageFormat& format, Rows rows, std::string savePath)
    : format_(format), rows_(std::move(rows)), savePath_(std::move(savePath)) {}

PackagedCreator::~PackagedCreator() = default;

void PackagedCreator::startConvert() {
    const std::lock_guard turn(turnOn(format_.type));
    const std::optional<std::string> stageFolder = applicationSupportFolder();
    if (!stageFolder) return noteFailure("There is no folder for application data: neither HOME nor a password entry.");
    noteFailure(createPrivateDirectories(std::string(pathWithoutLastComponent(*stageFolder))));
    // Beside the stage folder, which is removed and made again by whoever has the turn.
    const FileLock turnAmongProcesses(*stageFolder + ".lock");
    // Without a turn the parts of two documents would get into each other.
    if (!turnAmongProcesses.failure().empty()) return noteFailure(turnAmongProcesses.failure());
    convert(*stageFolder);
}

void PackagedCreator::convert(const std::string& stageFolder) {
    prepareStage();
    if (!hasNewStage_) return;  // what others left there must not become part of a document
    reportFraction(kSkeletonDone);
    writeParts();
    if (isStop()) return extportComplete(false);
    packDocument(stageFolder);
    removeHtmlFile();
    reportFraction(kFileDone);
}

void PackagedCreator::packDocument(const std::string& stageFolder) {
    const std::string path = documentPath(absolutePath(savePath_), format_.type);  // a packer has its own folder
    const std::string folder = makeFolderBeside(path);
    if (folder.empty()) return noteFailure(writeFailure(path, errno));
    packThrough(folder, stageFolder, path);
    removeTree(folder);  // with all that a failing packer left
}

void PackagedCreator::packThrough(const std::string& folder, const std::string& stageFolder, const std::string& path) {
    const std::string package = joinedPath(folder, lastPathComponent(path));
    const std::string failure = pack(stageFolder, package);
    if (!entryExists(package)) {
        const std::string reason = failure.empty() ? "it could not be packed." : failure;
        return noteFailure(fmt::format("Cannot write '{}': {}", path, reason));
    }
    // The exit status has no say: a package that is there becomes the document.
    noteFailure(failure);
    claimDocument(package, path);
}

std::string PackagedCreator::pack(const std::string& stageFolder, const std::string& package) {
    return runProgram({joinedPath(resourceFolder(), format_.script), stageFolder, package});
}

std::optional<std::string> PackagedCreator::applicationSupportFolder() const {
    std::optional<std::string> folder = stageFolder(format_);
    if (!folder) requestTermination();
    return folder;
}

void PackagedCreator::createSupportFolder() {
    hasNewStage_ = false;
    const std::optional<std::string> folder = applicationSupportFolder();
    if (!folder) return;
    std::string failure = removeTree(*folder);
    if (failure.empty()) failure = createPrivateDirectories(*folder);
    hasNewStage_ = failure.empty();
    noteFailure(failure);
}

void PackagedCreator::removeHtmlFile() {
    if (const std::optional<std::string> folder = applicationSupportFolder()) removeTree(*folder);
}

std::string PackagedCreator::stagePath(std::string_view name) const {
    return ZkMobileBackup::stagePath(format_, name);
}

bool PackagedCreator::layTemplate() {
    createSupportFolder();
    if (!hasNewStage_) return false;
    const std::string path = joinedPath(resourceFolder(), format_.templateName);
    const std::string failure = unpackFailure(path, stagePath(""));
    if (!failure.empty()) noteFailure(fmt::format("Cannot unpack the template '{}': {}", path, failure));
    for (const char* folder : format_.folders) noteFailure(createDirectories(stagePath(folder)));
    return true;
}

}  // namespace ZkMobileBackup
