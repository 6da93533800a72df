#include "ZkMobileBackup/backup/ZkiTunesBackupSnapshot.h"

#include <string_view>
#include <utility>

#include "base/Text.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"

namespace ZkMobileBackup {

namespace {

using Snapshots = std::vector<std::shared_ptr<ZkiTunesBackupSnapshot>>;

constexpr std::string_view kBackupsFolder = "Library/Application Support/MobileSync/Backup/";
constexpr std::string_view kFolderSettings = ".DS_Store";  // the file manager's own, no backup
constexpr std::int64_t kSizeNotComputed = 0;

std::optional<std::string> textOf(const Dictionary& information, std::string_view key) {
    const std::string* text = information.text(key);
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<Date> dateOf(const Dictionary& information, std::string_view key) {
    const Value* value = information.find(key);
    const Date* date = value != nullptr ? value->date() : nullptr;
    return date != nullptr ? std::optional(*date) : std::nullopt;
}

/// Null for a folder without readable information.
std::shared_ptr<ZkiTunesBackupSnapshot> snapshotOf(std::string folder) {
    const std::optional<Dictionary> information = readPropertyList(joinedPath(folder, "Info.plist"));
    if (!information) return nullptr;
    // The device's user-visible name stands in for its class: hosts show it to tell backups apart.
    const std::string_view deviceClassKey = "Display Name";
    return ZkiTunesBackupSnapshot::initWithUDID(textOf(*information, "Unique Identifier"),
                                                textOf(*information, "Serial Number"),
                                                textOf(*information, deviceClassKey), kSizeNotComputed,
                                                dateOf(*information, "Last Backup Date"), std::move(folder));
}

Snapshots snapshotsOfCurrentUser() {
    const std::optional<std::string> home = homeFolder();
    return home ? ZkiTunesBackupSnapshot::snapshotsInFolder(joinedPath(*home, kBackupsFolder)) : Snapshots();
}

}  // namespace

std::shared_ptr<ZkiTunesBackupSnapshot> ZkiTunesBackupSnapshot::initWithUDID(
    std::optional<std::string> UDID, std::optional<std::string> serialNumber, std::optional<std::string> deviceClass,
    std::int64_t size, std::optional<Date> lastUpdate, std::string path) {
    return std::shared_ptr<ZkiTunesBackupSnapshot>(new ZkiTunesBackupSnapshot(
        std::move(UDID), std::move(serialNumber), std::move(deviceClass), size, lastUpdate, std::move(path)));
}

const Snapshots& ZkiTunesBackupSnapshot::iTunesBackupSnapshots() {
    static const Snapshots& snapshots = *new Snapshots(snapshotsOfCurrentUser());
    return snapshots;
}

Snapshots ZkiTunesBackupSnapshot::snapshotsInFolder(const std::string& path) {
    Snapshots snapshots;
    for (const std::string& name : directoryEntries(path).value_or(std::vector<std::string>())) {
        if (name == kFolderSettings) continue;
        if (auto snapshot = snapshotOf(joinedPath(path, name))) snapshots.push_back(std::move(snapshot));
    }
    return snapshots;
}

}  // namespace ZkMobileBackup
