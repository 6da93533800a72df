#pragma once

#include <string_view>

namespace ZkMobileBackup {

/// Keys of the dictionary that parserProcess receives.
inline constexpr std::string_view kBackupProcessKey = "Backup_Process_Key";           ///< fraction done, floating
inline constexpr std::string_view kBackupDeletedDataKey = "Backup_Deleted_Data_Key";  ///< deleted result rows so far
inline constexpr std::string_view kBackupAllDataKey = "Backup_All_Data_Key";          ///< all result rows so far
inline constexpr std::string_view kBackupIdentifyKey = "Backup_identify_Key";         ///< name of the result table

/// Key of the text that tells one result row from every other; it is no column and never exported.
inline constexpr std::string_view kRowIdentityKey = "RowData_Identify_Key";

}  // namespace ZkMobileBackup
