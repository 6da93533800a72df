#include "ZkMobileBackup/backup/BackupFolder.h"

#include <algorithm>

#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"
#include "base/Text.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

constexpr std::size_t kFileIDLength = 40;

bool isHexadecimalDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isHexadecimalFileID(std::string_view text) {
    return text.size() == kFileIDLength && std::ranges::all_of(text, isHexadecimalDigit);
}

unsigned char lowerCaseOf(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

bool precedesWithoutCase(std::string_view left, std::string_view right) {
    return std::ranges::lexicographical_compare(left, right, {}, lowerCaseOf, lowerCaseOf);
}

}  // namespace

std::optional<std::string> BackupFolder::pathOf(std::string_view fileID) {
    if (isHexadecimalFileID(fileID)) return joinedPath(path_, storedName(fileID));
    if (fileID == kNoFileID) return joinedPath(path_, fileID);
    return std::nullopt;
}

std::string_view BackupFolder::storedName(std::string_view fileID) {
    const auto [first, last] = std::equal_range(names().begin(), names().end(), fileID, precedesWithoutCase);
    return first == last || std::find(first, last, fileID) != last ? fileID : *first;
}

const std::vector<std::string>& BackupFolder::names() {
    if (!names_) {
        names_ = directoryEntries(path_).value_or(std::vector<std::string>());
        std::ranges::stable_sort(*names_, precedesWithoutCase);
    }
    return *names_;
}

}  // namespace ZkMobileBackup
