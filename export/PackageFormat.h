#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "export/DlxExportType.h"

namespace ZkMobileBackup {

/// What one packaged format is, besides its parts.
struct PackageFormat {
    DlxExportType type;
    const char* stageFolder;               ///< name of its stage folder
    const char* templateName;              ///< file in the resource folder
    const char* script;                    ///< file in the resource folder that packs it; null when the writer packs it
    std::span<const char* const> folders;  ///< made in the stage folder besides what the template brings
};

extern const PackageFormat kDocxPackage;
extern const PackageFormat kXlsxPackage;
extern const PackageFormat kNumbersPackage;
extern const PackageFormat kPagesPackage;

/// The stage folder of a format; nothing where the user has no folder for application data. It need not exist.
std::optional<std::string> stageFolder(const PackageFormat& format);
/// Path of a file or folder in it; empty, which names none, without that folder.
std::string stagePath(const PackageFormat& format, std::string_view name);

}  // namespace ZkMobileBackup
