#include "export/PackageFormat.h"

#include "base/Text.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

// Pictures were once to go into these; they stay empty. Documents that are packed with all of their stage folder have
// them, and are expected to.
constexpr const char* kDocxFolders[] = {"word/media", "mm", "mm/images"};
constexpr const char* kXlsxFolders[] = {"xl/media", "xl/drawings/_rels", "mm", "mm/images"};
constexpr const char* kBundleFolders[] = {"mm", "mm/images"};

}  // namespace

const PackageFormat kDocxPackage = {DlxExportType::kDocx, "DocStage", "test.docx", "zipBuildWord.sh", kDocxFolders};
const PackageFormat kXlsxPackage = {DlxExportType::kXlsx, "XlsStage", "test.xlsx", nullptr, kXlsxFolders};
const PackageFormat kNumbersPackage = {DlxExportType::kNumbers, "NumStage", "test.numbers", "zipBuildNumbers.sh",
                                       kBundleFolders};
const PackageFormat kPagesPackage = {DlxExportType::kPages, "PgsStage", "test.pages", "zipBuildPages.sh",
                                     kBundleFolders};

std::optional<std::string> stageFolder(const PackageFormat& format) {
    const std::optional<std::string> support = applicationSupportFolder();
    if (!support) return std::nullopt;
    return joinedPath(*support, format.stageFolder);
}

std::string stagePath(const PackageFormat& format, std::string_view name) {
    const std::optional<std::string> folder = stageFolder(format);
    return folder ? joinedPath(*folder, name) : std::string();
}

}  // namespace ZkMobileBackup
