#include <gtest/gtest.h>

#include "ZkMobileBackup/backup/BackupFolder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

const std::string kUpperName = "31BB7BA8914766D4BA40D6DFB6113C8B614BE442";
const std::string kLowerName = "31bb7ba8914766d4ba40d6dfb6113c8b614be442";
const std::string kMixedName = "31bB7ba8914766d4ba40d6dfb6113c8b614be442";

TEST(BackupFolder, StoredNameIsTakenAsItStands) {
    const TemporaryFolder folder;
    writeText(folder.path(kUpperName), "");
    EXPECT_EQ(BackupFolder(folder.path()).pathOf(kUpperName), folder.path(kUpperName));
}

TEST(BackupFolder, UpperCaseNameFindsTheLowerCaseFile) {
    const TemporaryFolder folder;
    writeText(folder.path(kLowerName), "");
    EXPECT_EQ(BackupFolder(folder.path()).pathOf(kUpperName), folder.path(kLowerName));
}

TEST(BackupFolder, LowerCaseNameFindsTheUpperCaseFile) {
    const TemporaryFolder folder;
    writeText(folder.path(kUpperName), "");
    EXPECT_EQ(BackupFolder(folder.path()).pathOf(kLowerName), folder.path(kUpperName));
}

TEST(BackupFolder, ExactNameGoesBeforeOneInAnotherCase) {
    const TemporaryFolder folder;
    for (const auto& name : {kUpperName, kMixedName, kLowerName}) writeText(folder.path(name), "");
    BackupFolder files(folder.path());
    for (const auto& name : {kUpperName, kMixedName, kLowerName}) EXPECT_EQ(files.pathOf(name), folder.path(name));
}

TEST(BackupFolder, FirstInByteOrderIsTakenOfSeveralInOtherCases) {
    const TemporaryFolder folder;
    for (const auto& name : {kLowerName, kMixedName}) writeText(folder.path(name), "");
    EXPECT_EQ(BackupFolder(folder.path()).pathOf(kUpperName), folder.path(kMixedName));
}

TEST(BackupFolder, NameOfAnotherFileIsNotTaken) {
    const TemporaryFolder folder;
    writeText(folder.path("0" + kLowerName.substr(1)), "");
    writeText(folder.path(kLowerName + "0"), "");
    writeText(folder.path(kLowerName.substr(1)), "");
    EXPECT_EQ(BackupFolder(folder.path()).pathOf(kUpperName), folder.path(kUpperName));
}

TEST(BackupFolder, MissingFileStillHasItsPath) {
    const TemporaryFolder folder;
    EXPECT_EQ(BackupFolder(folder.path()).pathOf(kUpperName), folder.path(kUpperName));
}

TEST(BackupFolder, FolderThatCannotBeListedStillGivesPaths) {
    const TemporaryFolder folder;
    EXPECT_EQ(BackupFolder(folder.path("missing")).pathOf(kUpperName), folder.path("missing/" + kUpperName));
}

TEST(BackupFolder, MarkOfARecordWithoutFileIsAPathInTheFolder) {
    const TemporaryFolder folder;
    EXPECT_EQ(BackupFolder(folder.path()).pathOf("<nofileID>"), folder.path("<nofileID>"));
}

TEST(BackupFolder, NothingElseEverFormsAPath) {
    const TemporaryFolder folder;
    writeText(folder.path("plain"), "");
    BackupFolder files(folder.path());
    const std::string upAndOut = "../../../../../../../../../../etc/passwd";
    ASSERT_EQ(upAndOut.size(), 40U);
    for (const std::string& name :
         {std::string(), std::string(".."), std::string("plain"), upAndOut, kUpperName.substr(1), kUpperName + "0",
          "G" + kUpperName.substr(1), std::string(40, '\0'), std::string("<NOFILEID>")}) {
        EXPECT_EQ(files.pathOf(name), std::nullopt) << name;
    }
}

}  // namespace
}  // namespace ZkMobileBackup
