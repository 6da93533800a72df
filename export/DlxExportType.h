#pragma once

#include <array>
#include <cstdint>

namespace ZkMobileBackup {

/// The format in which records are written. Hosts may pass any integer; a value without a name here has no writer.
enum class DlxExportType : std::int64_t {
    kHtml = 0,
    kDocx = 1,
    kXlsx = 2,
    kNumbers = 3,
    kPages = 4,
};

/// What is known of a format without its writer.
struct DlxExportFormat {
    DlxExportType type;
    const char* extension;  ///< of its files, without the "."
};

inline constexpr std::array<DlxExportFormat, 5> kExportFormats{{
    {DlxExportType::kHtml, "html"},
    {DlxExportType::kDocx, "docx"},
    {DlxExportType::kXlsx, "xlsx"},
    {DlxExportType::kNumbers, "numbers"},
    {DlxExportType::kPages, "pages"},
}};

/// The file name extension of a format, "" for a type without a name.
constexpr const char* fileExtension(DlxExportType type) {
    for (const DlxExportFormat& format : kExportFormats) {
        if (format.type == type) return format.extension;
    }
    return "";
}

}  // namespace ZkMobileBackup
