#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZkMobileBackup {

/// The files of one backup folder, found by the names that a manifest gives them. One thread at a time.
class BackupFolder {
public:
    explicit BackupFolder(std::string path) : path_(std::move(path)) {}

    /// The path of the file that a manifest record names: the folder joined with the record's "fileID". Where nothing
    /// has that name, the entry that differs only in the case of its hexadecimal digits is taken: backups store
    /// lower-case names, while a hashed name is upper-case. The file need not exist. Nothing for a text that is neither
    /// 40 hexadecimal digits nor kNoFileID, so that no path ever leads out of the folder.
    std::optional<std::string> pathOf(std::string_view fileID);

private:
    std::string_view storedName(std::string_view fileID);
    const std::vector<std::string>& names();

    std::string path_;
    /// Names in the folder sorted without regard to case; read at the first look-up, once.
    std::optional<std::vector<std::string>> names_;
};

}  // namespace ZkMobileBackup
