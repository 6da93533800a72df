#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>

#include "platform/FileReplacement.h"
#include "platform/Files.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;

std::string textOf(const std::string& path) {
    const auto bytes = readBytes(path);
    return {bytes.begin(), bytes.end()};
}

std::vector<std::string> namesIn(const TemporaryFolder& folder) {
    return directoryEntries(folder.path()).value();
}

TEST(FileReplacement, OldFileStandsUntilTheNewOneIsFinished) {
    const TemporaryFolder folder;
    writeText(folder.path("a"), "old");
    FileReplacement file(folder.path("a"));
    file.append("new ");
    file.append("text");
    EXPECT_EQ(textOf(folder.path("a")), "old");
    EXPECT_EQ(file.finish(), "");
    EXPECT_EQ(textOf(folder.path("a")), "new text");
    EXPECT_THAT(namesIn(folder), ElementsAre("a"));
}

TEST(FileReplacement, UnfinishedFileLeavesNothing) {
    const TemporaryFolder folder;
    writeText(folder.path("a"), "old");
    { FileReplacement(folder.path("a")).append("new"); }
    EXPECT_EQ(textOf(folder.path("a")), "old");
    EXPECT_THAT(namesIn(folder), ElementsAre("a"));
}

TEST(FileReplacement, FileThatWasNotThereIsMade) {
    const TemporaryFolder folder;
    EXPECT_EQ(FileReplacement(folder.path("a")).finish(), "");
    EXPECT_EQ(fs::file_size(folder.path("a")), 0U);
}

TEST(FileReplacement, MissingFolderIsAFailureThatNamesTheFile) {
    const TemporaryFolder folder;
    FileReplacement file(folder.path("missing/a"));
    file.append("text");
    EXPECT_EQ(file.finish(), "Cannot write '" + folder.path("missing/a") + "': No such file or directory.");
}

TEST(FileReplacement, FolderIsNotReplaced) {
    const TemporaryFolder folder;
    fs::create_directory(folder.path("a"));
    FileReplacement file(folder.path("a"));
    EXPECT_THAT(file.finish(), HasSubstr(folder.path("a")));
}

TEST(FileReplacement, FullDiskKeepsTheOldFileAndTheFirstReason) {
    const TemporaryFolder folder;
    writeText(folder.path("a"), "old");
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old;
    getrlimit(RLIMIT_FSIZE, &old);
    rlimit lowered = old;
    lowered.rlim_cur = 1000;
    setrlimit(RLIMIT_FSIZE, &lowered);
    std::string failure;
    {
        FileReplacement file(folder.path("a"));
        file.append(std::string(2000, 'x'));
        file.append("more");
        failure = file.finish();
    }
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(failure, "Cannot write '" + folder.path("a") + "': File too large.");
    EXPECT_EQ(textOf(folder.path("a")), "old");
    EXPECT_THAT(namesIn(folder), ElementsAre("a"));
}

}  // namespace
}  // namespace ZkMobileBackup
