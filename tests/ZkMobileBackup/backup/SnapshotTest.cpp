#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>
#include <thread>
#include <vector>

#include "ZkMobileBackup/backup/ApplicationDatabases.h"
#include "ZkMobileBackup/backup/ZkiTunesBackupSnapshot.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;

const std::string kUdid = "<key>Unique Identifier</key><string>0123abcd</string>";
const std::string kSerialNumber = "<key>Serial Number</key><string>SN1</string>";
const std::string kDisplayName = "<key>Display Name</key><string>Ada’s phone</string>";
const std::string kLastBackup = "<key>Last Backup Date</key><date>2011-05-01T12:00:00Z</date>";
const std::string kEverything = kUdid + kSerialNumber + kDisplayName + kLastBackup;

std::string propertyList(const std::string& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries + "</dict></plist>\n";
}

/// A folder that holds backups.
class Backups {
public:
    explicit Backups(std::string path) : path_(std::move(path)) {}

    void add(const std::string& name, const std::string& entries = kEverything) const {
        writeText(path_ + "/" + name + "/Info.plist", propertyList(entries));
    }
    std::vector<std::shared_ptr<ZkiTunesBackupSnapshot>> snapshots() const {
        return ZkiTunesBackupSnapshot::snapshotsInFolder(path_);
    }
    std::vector<std::string> paths() const {
        std::vector<std::string> paths;
        for (const auto& snapshot : snapshots()) paths.push_back(snapshot->path());
        return paths;
    }

private:
    std::string path_;
};

TEST(Snapshot, HoldsTheSixValuesItIsMadeWith) {
    const auto snapshot = ZkDeviceBackupSnapshot::initWithUDID("u", "s", "c", 7, Date{8}, "/p");
    EXPECT_EQ(snapshot->UDID(), "u");
    EXPECT_EQ(snapshot->serialNumber(), "s");
    EXPECT_EQ(snapshot->deviceClass(), "c");
    EXPECT_EQ(snapshot->size(), 7);
    EXPECT_EQ(snapshot->lastUpdate(), Date{8});
    EXPECT_EQ(snapshot->path(), "/p");
}

TEST(Snapshot, NamesTheEightApplicationDatabasesInTheirOrder) {
    const auto snapshot = ZkDeviceBackupSnapshot::initWithUDID({}, {}, {}, 0, {}, "/p");
    EXPECT_THAT(snapshot->userTextDataDB(),
                ElementsAre("AddressBook.sqlitedb", "Calendar.sqlitedb", "sms.db", "notes.sqlite", "call_history.db",
                            "Bookmarks.db", "voicemail.db", "Photos.sqlite"));
}

TEST(SnapshotsInFolder, MissingFolderGivesAnEmptyList) {
    const TemporaryFolder folder;
    EXPECT_TRUE(Backups(folder.path("missing")).snapshots().empty());
}

TEST(SnapshotsInFolder, FileInPlaceOfTheFolderGivesAnEmptyList) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "");
    EXPECT_TRUE(Backups(folder.path("file")).snapshots().empty());
}

TEST(SnapshotsInFolder, ValuesComeFromTheInformationFile) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    backups.add("one");
    const auto snapshots = backups.snapshots();
    ASSERT_EQ(snapshots.size(), 1U);
    EXPECT_EQ(snapshots[0]->UDID(), "0123abcd");
    EXPECT_EQ(snapshots[0]->serialNumber(), "SN1");
    EXPECT_EQ(snapshots[0]->lastUpdate(), Date{1304251200});
    EXPECT_EQ(snapshots[0]->path(), folder.path("one"));
}

TEST(SnapshotsInFolder, DisplayNameStandsInTheDeviceClassSlot) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    backups.add("one", kEverything + "<key>Device Class</key><string>Phone</string>");
    EXPECT_EQ(backups.snapshots().at(0)->deviceClass(), "Ada’s phone");
}

TEST(SnapshotsInFolder, SizeIsNeverComputed) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    backups.add("one");
    writeText(folder.path("one/data"), "some bytes");
    EXPECT_EQ(backups.snapshots().at(0)->size(), 0);
}

TEST(SnapshotsInFolder, FolderSettingsFileIsNoBackup) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    writeText(folder.path(".DS_Store"), "settings");
    backups.add("one");
    EXPECT_THAT(backups.paths(), ElementsAre(folder.path("one")));
}

TEST(SnapshotsInFolder, BackupNamedLikeTheFolderSettingsIsSkippedAndItsNeighboursAreNot) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    for (const char* name : {".DS_Store", ".DS_Store2", ".ds_store"}) backups.add(name);
    EXPECT_THAT(backups.paths(), ElementsAre(folder.path(".DS_Store2"), folder.path(".ds_store")));
}

TEST(SnapshotsInFolder, MissingSerialNumberIsNothing) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    backups.add("one", kUdid + kDisplayName + kLastBackup);
    const auto snapshots = backups.snapshots();
    ASSERT_EQ(snapshots.size(), 1U);
    EXPECT_EQ(snapshots[0]->serialNumber(), std::nullopt);
    EXPECT_EQ(snapshots[0]->UDID(), "0123abcd");
}

TEST(SnapshotsInFolder, EmptyInformationStillMakesASnapshot) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    backups.add("one", "");
    const auto snapshots = backups.snapshots();
    ASSERT_EQ(snapshots.size(), 1U);
    EXPECT_EQ(snapshots[0]->UDID(), std::nullopt);
    EXPECT_EQ(snapshots[0]->deviceClass(), std::nullopt);
    EXPECT_EQ(snapshots[0]->lastUpdate(), std::nullopt);
}

TEST(SnapshotsInFolder, ValuesOfAnotherKindAreNothing) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    backups.add("one",
                "<key>Unique Identifier</key><integer>5</integer>"
                "<key>Last Backup Date</key><string>yesterday</string>");
    const auto snapshots = backups.snapshots();
    ASSERT_EQ(snapshots.size(), 1U);
    EXPECT_EQ(snapshots[0]->UDID(), std::nullopt);
    EXPECT_EQ(snapshots[0]->lastUpdate(), std::nullopt);
}

TEST(SnapshotsInFolder, UnreadableBackupsAreSkippedInSilence) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    writeText(folder.path("a file"), "");
    writeText(folder.path("no information/data"), "");
    writeText(folder.path("no property list/Info.plist"), "hello");
    writeText(folder.path("empty/Info.plist"), "");
    writeText(folder.path("an array/Info.plist"), "<plist version=\"1.0\"><array/></plist>");
    writeText(folder.path("a folder/Info.plist/data"), "");
    backups.add("readable");
    testing::internal::CaptureStderr();
    EXPECT_THAT(backups.paths(), ElementsAre(folder.path("readable")));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(SnapshotsInFolder, BackupsStandInByteOrderOfTheirNames) {
    const TemporaryFolder folder;
    const Backups backups(folder.path());
    for (const char* name : {"b", "a", "ä", "B"}) backups.add(name);
    EXPECT_THAT(backups.paths(), ElementsAre(folder.path("B"), folder.path("a"), folder.path("b"), folder.path("ä")));
}

// The list is the process's, so that one test alone can ask for it first.
TEST(ITunesBackupSnapshots, ListIsBuiltOnceInTheUsersBackupsFolder) {
    const TemporaryFolder home;
    setenv("HOME", home.path().c_str(), 1);
    const std::string folder = home.path("Library/Application Support/MobileSync/Backup");
    const Backups backups(folder);
    backups.add("first");

    const std::vector<std::shared_ptr<ZkiTunesBackupSnapshot>>* other = nullptr;
    std::thread sameTime([&] { other = &ZkiTunesBackupSnapshot::iTunesBackupSnapshots(); });
    const auto& snapshots = ZkiTunesBackupSnapshot::iTunesBackupSnapshots();
    sameTime.join();
    EXPECT_EQ(other, &snapshots);
    ASSERT_EQ(snapshots.size(), 1U);
    EXPECT_EQ(snapshots[0]->path(), folder + "/first");

    backups.add("second");
    EXPECT_EQ(ZkiTunesBackupSnapshot::iTunesBackupSnapshots().size(), 1U);
    EXPECT_EQ(backups.snapshots().size(), 2U);
}

}  // namespace
}  // namespace ZkMobileBackup
