#include <cerrno>
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <stdlib.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/Files.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;

namespace fs = std::filesystem;

std::vector<std::string> namesIn(const TemporaryFolder& folder) {
    return directoryEntries(folder.path()).value();
}

/// Lowers a limit of the process while it lives.
class ResourceLimit {
public:
    ResourceLimit(__rlimit_resource resource, rlim_t limit) : resource_(resource) {
        getrlimit(resource_, &old_);
        rlimit lowered = old_;
        lowered.rlim_cur = limit;
        EXPECT_EQ(setrlimit(resource_, &lowered), 0);
    }
    ~ResourceLimit() { setrlimit(resource_, &old_); }
    ResourceLimit(const ResourceLimit&) = delete;
    ResourceLimit& operator=(const ResourceLimit&) = delete;

private:
    __rlimit_resource resource_;
    rlimit old_;
};

TEST(EntryExists, LinkThatLeadsNowhereCounts) {
    const TemporaryFolder folder;
    EXPECT_FALSE(entryExists(folder.path("link")));
    fs::create_symlink("nowhere", folder.path("link"));
    EXPECT_TRUE(entryExists(folder.path("link")));
}

TEST(IsDirectory, TellsFoldersFromFiles) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "");
    EXPECT_TRUE(isDirectory(folder.path()));
    EXPECT_FALSE(isDirectory(folder.path("file")));
    EXPECT_FALSE(isDirectory(folder.path("missing")));
}

TEST(DirectoryEntries, NamesAreSortedByTheirBytes) {
    const TemporaryFolder folder;
    for (const char* name : {"b", "a", "ä", "B", ".hidden"}) writeText(folder.path(name), "");
    EXPECT_THAT(directoryEntries(folder.path()), Optional(ElementsAre(".hidden", "B", "a", "b", "ä")));
}

TEST(DirectoryEntries, EmptyFolderHasNone) {
    const TemporaryFolder folder;
    EXPECT_THAT(directoryEntries(folder.path()), Optional(IsEmpty()));
}

TEST(DirectoryEntries, WhatCannotBeListedGivesNothing) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "");
    EXPECT_EQ(directoryEntries(folder.path("file")), std::nullopt);
    EXPECT_EQ(directoryEntries(folder.path("missing")), std::nullopt);
}

TEST(ReadFile, BytesAreReadWhole) {
    const TemporaryFolder folder;
    for (const std::size_t length : {0U, 1U, 262143U, 262144U, 262145U, 1000000U}) {
        std::vector<std::uint8_t> bytes(length);
        for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<std::uint8_t>(i * 31 + i / 256);
        writeBytes(folder.path("file"), bytes);
        EXPECT_EQ(readFile(folder.path("file")), bytes) << length;
    }
}

TEST(ReadFile, FileThatClaimsToBeEmptyIsReadToItsEnd) {
    EXPECT_THAT(readFile("/proc/self/status"), Optional(testing::Not(IsEmpty())));
}

TEST(ReadFile, LinkToAFileIsRead) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "x");
    fs::create_symlink("file", folder.path("link"));
    EXPECT_THAT(readFile(folder.path("link")), Optional(ElementsAre('x')));
}

TEST(ReadFile, OnlyRegularFilesAreRead) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(readFile(folder.path("pipe")), std::nullopt);
    EXPECT_EQ(readFile(folder.path()), std::nullopt);
    EXPECT_EQ(readFile("/dev/zero"), std::nullopt);
    EXPECT_EQ(readFile(folder.path("missing")), std::nullopt);
    EXPECT_EQ(readFile(""), std::nullopt);
}

TEST(ReadFile, FileOverTheLimitIsNotRead) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "1234");
    EXPECT_TRUE(readFile(folder.path("file"), 4).has_value());
    EXPECT_EQ(readFile(folder.path("file"), 3), std::nullopt);
}

TEST(ReadFile, FileThatGrowsOverTheLimitWhileReadingIsNotReturned) {
    EXPECT_EQ(readFile("/proc/self/status", 10), std::nullopt);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // these reserve more than the limit themselves
TEST(ReadFile, FileLargerThanMemoryGivesNothing) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "");
    fs::resize_file(folder.path("file"), std::uintmax_t{1} << 40);  // has no bytes on the disk
    const ResourceLimit memory(RLIMIT_AS, rlim_t{1} << 36);
    EXPECT_EQ(readFile(folder.path("file")), std::nullopt);
}
#endif

TEST(CreateDirectories, FoldersAboveAreMadeToo) {
    const TemporaryFolder folder;
    EXPECT_EQ(createDirectories(folder.path("a/b/c")), "");
    EXPECT_TRUE(isDirectory(folder.path("a/b/c")));
}

TEST(CreateDirectories, FolderThatExistsIsNoFailure) {
    const TemporaryFolder folder;
    EXPECT_EQ(createDirectories(folder.path()), "");
}

TEST(CreateDirectories, FailureNamesTheFolder) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "");
    EXPECT_THAT(createDirectories(folder.path("file")), HasSubstr(folder.path("file")));
    EXPECT_THAT(createDirectories(folder.path("file/below")), HasSubstr(folder.path("file/below")));
}

TEST(CreatePrivateDirectories, WhatIsMadeIsClosedToOthersAndWhatExistsStaysAsItIs) {
    const TemporaryFolder folder;
    fs::create_directory(folder.path("open"));
    const fs::perms before = fs::status(folder.path("open")).permissions();
    const mode_t mask = umask(0);
    EXPECT_EQ(createPrivateDirectories(folder.path("open/a/b")), "");
    EXPECT_EQ(createPrivateDirectories(folder.path("open")), "");
    umask(mask);
    EXPECT_EQ(fs::status(folder.path("open/a")).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder.path("open/a/b")).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(folder.path("open")).permissions(), before);
}

TEST(CreatePrivateDirectories, FailureNamesTheFolder) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "");
    EXPECT_EQ(createPrivateDirectories(folder.path("file")),
              "Cannot create the folder '" + folder.path("file") + "': File exists.");
    EXPECT_THAT(createPrivateDirectories(folder.path("file/below/it")), HasSubstr(folder.path("file")));
}

TEST(AbsolutePath, RelativePathStartsAtTheWorkingFolder) {
    EXPECT_EQ(absolutePath("a/b"), fs::current_path().string() + "/a/b");
    EXPECT_EQ(absolutePath("/a/b"), "/a/b");
}

/// Sets a variable of the environment while it lives.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* old = getenv(name)) old_ = old;
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    }
    ~Variable() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(HomeFolder, EnvironmentIsAskedAtEachCall) {
    const Variable home("HOME", "/first");
    EXPECT_EQ(homeFolder(), "/first");
    const Variable other("HOME", "/second");
    EXPECT_EQ(homeFolder(), "/second");
}

TEST(HomeFolder, WithoutTheVariableThePasswordEntryDecides) {
    const Variable home("HOME", nullptr);
    EXPECT_THAT(homeFolder(), Optional(testing::StartsWith("/")));
}

TEST(ApplicationSupportFolder, EnvironmentIsAskedFirstAndAtEachCall) {
    const Variable home("HOME", "/home");
    const Variable dataHome("XDG_DATA_HOME", "/data");
    EXPECT_EQ(applicationSupportFolder(), "/data/ZkMobileBackup");
    const Variable other("XDG_DATA_HOME", nullptr);
    EXPECT_EQ(applicationSupportFolder(), "/home/.local/share/ZkMobileBackup");
}

TEST(ApplicationSupportFolder, RelativeOrEmptyVariableIsIgnored) {
    const Variable home("HOME", "/home");
    for (const char* value : {"", "relative/data", "."}) {
        const Variable dataHome("XDG_DATA_HOME", value);
        EXPECT_EQ(applicationSupportFolder(), "/home/.local/share/ZkMobileBackup") << value;
    }
}

TEST(RemoveTree, FolderGoesWithAllItHolds) {
    const TemporaryFolder folder;
    writeText(folder.path("a/b/c"), "x");
    EXPECT_EQ(removeTree(folder.path("a")), "");
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(RemoveTree, LinkIsRemovedAndNotFollowed) {
    const TemporaryFolder folder;
    writeText(folder.path("kept/file"), "x");
    fs::create_directories(folder.path("tree"));
    fs::create_directory_symlink(folder.path("kept"), folder.path("tree/link"));
    fs::create_directory_symlink(folder.path("kept"), folder.path("link"));
    removeTree(folder.path("tree"));
    removeTree(folder.path("link"));
    EXPECT_THAT(namesIn(folder), ElementsAre("kept"));
    EXPECT_TRUE(entryExists(folder.path("kept/file")));
}

TEST(RemoveTree, WhatIsNotThereIsNoFailure) {
    const TemporaryFolder folder;
    EXPECT_EQ(removeTree(folder.path("missing/tree")), "");
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(RemoveTree, WhatCannotBeRemovedIsNamed) {
    // A file that not even the superuser removes.
    EXPECT_THAT(removeTree("/proc/version"), HasSubstr("Cannot remove '/proc/version': "));
}

TEST(MakeFolderBeside, EachCallMakesANewEmptyFolderInTheSameFolder) {
    const TemporaryFolder folder;
    const std::string first = makeFolderBeside(folder.path("a.txt"));
    const std::string second = makeFolderBeside(folder.path("a.txt"));
    EXPECT_NE(first, second);
    for (const std::string& made : {first, second}) {
        EXPECT_EQ(fs::path(made).parent_path(), folder.path());
        EXPECT_TRUE(fs::is_empty(made));
    }
}

TEST(MakeFolderBeside, FailureGivesNothingAndTheReason) {
    const TemporaryFolder folder;
    writeText(folder.path("file"), "x");
    EXPECT_EQ(makeFolderBeside(folder.path("missing/a")), "");
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(makeFolderBeside(folder.path("file/a")), "");
    EXPECT_EQ(errno, ENOTDIR);
}

TEST(MoveToFreeName, ExistingFileIsNeverReplaced) {
    const TemporaryFolder folder;
    writeText(folder.path("a.txt"), "there");
    writeText(folder.path("new"), "x");
    const WrittenFile file = moveToFreeName(folder.path("new"), folder.path("a.txt"));
    EXPECT_EQ(file.path, folder.path("a(0).txt"));
    EXPECT_EQ(file.failure, "");
    EXPECT_THAT(namesIn(folder), ElementsAre("a(0).txt", "a.txt"));
    EXPECT_EQ(readBytes(folder.path("a.txt")).size(), 5U);
}

TEST(MoveToFreeName, FailureNamesThePathAndRemovesTheFile) {
    const TemporaryFolder folder;
    writeText(folder.path("new"), "x");
    const WrittenFile file = moveToFreeName(folder.path("new"), folder.path("missing/a.txt"));
    EXPECT_EQ(file.path, "");
    EXPECT_THAT(file.failure, HasSubstr(folder.path("missing/a.txt")));
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(ReplaceFile, ReplacesAFileWhole) {
    const TemporaryFolder folder;
    writeText(folder.path("a.txt"), "a longer text");
    EXPECT_EQ(replaceFile(folder.path("a.txt"), "short"), "");
    EXPECT_EQ(readBytes(folder.path("a.txt")).size(), 5U);
    EXPECT_THAT(namesIn(folder), ElementsAre("a.txt"));
}

TEST(FreeOutputPath, FreePathIsReturnedUnchanged) {
    const TemporaryFolder folder;
    EXPECT_EQ(freeOutputPath(folder.path("a.txt")), folder.path("a.txt"));
}

TEST(FreeOutputPath, NumberingStartsAtZeroDeliberately) {
    const TemporaryFolder folder;
    writeText(folder.path("a.txt"), "");
    EXPECT_EQ(freeOutputPath(folder.path("a.txt")), folder.path("a(0).txt"));
    writeText(folder.path("a(0).txt"), "");
    EXPECT_EQ(freeOutputPath(folder.path("a.txt")), folder.path("a(1).txt"));
}

TEST(FreeOutputPath, NumberFollowsANameWithoutExtension) {
    const TemporaryFolder folder;
    for (const char* name : {"a", ".hidden"}) writeText(folder.path(name), "");
    EXPECT_EQ(freeOutputPath(folder.path("a")), folder.path("a(0)"));
    EXPECT_EQ(freeOutputPath(folder.path(".hidden")), folder.path(".hidden(0)"));
}

TEST(FreeOutputPath, LastExtensionAloneStaysBehindTheNumber) {
    const TemporaryFolder folder;
    writeText(folder.path("a.tar.gz"), "");
    EXPECT_EQ(freeOutputPath(folder.path("a.tar.gz")), folder.path("a.tar(0).gz"));
}

TEST(FreeOutputPath, SameNumberIsRemovedFromTheNameFirst) {
    const TemporaryFolder folder;
    writeText(folder.path("a(0)b(0).txt"), "");
    EXPECT_EQ(freeOutputPath(folder.path("a(0)b(0).txt")), folder.path("ab(0).txt"));
    writeText(folder.path("ab(0).txt"), "");
    EXPECT_EQ(freeOutputPath(folder.path("a(0)b(0).txt")), folder.path("a(0)b(0)(1).txt"));
}

TEST(FreeOutputPath, FoldersKeepTheirNumbers) {
    const TemporaryFolder folder;
    writeText(folder.path("x(0)/a.txt"), "");
    EXPECT_EQ(freeOutputPath(folder.path("x(0)/a.txt")), folder.path("x(0)/a(0).txt"));
}

TEST(FreeOutputPath, DotInAFolderIsNoExtension) {
    const TemporaryFolder folder;
    writeText(folder.path("x.y/a"), "");
    EXPECT_EQ(freeOutputPath(folder.path("x.y/a")), folder.path("x.y/a(0)"));
}

TEST(FreeOutputPath, DanglingLinkTakesAName) {
    const TemporaryFolder folder;
    fs::create_symlink("nowhere", folder.path("a.txt"));
    EXPECT_EQ(freeOutputPath(folder.path("a.txt")), folder.path("a(0).txt"));
}

TEST(OutputPaths, AreThoseOfFreeOutputPath) {
    const TemporaryFolder folder;
    OutputPaths paths;
    for (const char* name : {"a.txt", "a.txt", "a(0)b(0)", "a.txt", "a(0)b(0)", "b", "a(0)b(0)", "a(1).txt", "a.txt"}) {
        const std::string path = paths.next(folder.path(name));
        EXPECT_EQ(path, freeOutputPath(folder.path(name)));
        writeText(path, "");
    }
    EXPECT_EQ(namesIn(folder).size(), 9U);
}

TEST(OutputPaths, PathThatWasNotUsedIsGivenAgain) {
    const TemporaryFolder folder;
    OutputPaths paths;
    EXPECT_EQ(paths.next(folder.path("a")), folder.path("a"));
    writeText(folder.path("a"), "");
    EXPECT_EQ(paths.next(folder.path("a")), folder.path("a(0)"));
    EXPECT_EQ(paths.next(folder.path("a")), folder.path("a(0)"));
}

TEST(OutputPaths, NumbersThatWereGivenAreNotAskedForAgain) {
    const TemporaryFolder folder;
    OutputPaths paths;
    for (int count = 0; count < 4; ++count) writeText(paths.next(folder.path("a")), "");
    fs::remove(folder.path("a(0)"));
    EXPECT_EQ(freeOutputPath(folder.path("a")), folder.path("a(0)"));
    EXPECT_EQ(paths.next(folder.path("a")), folder.path("a(3)"));
}

TEST(CopyToNewFile, NeverReplacesAnother) {
    const TemporaryFolder folder;
    OutputPaths paths;
    writeText(folder.path("source"), "text");
    for (const char* expected : {"a.JPG", "a(0).JPG", "a(1).JPG"}) {
        EXPECT_EQ(copyToNewFile(folder.path("source"), folder.path("a.JPG"), paths).path, folder.path(expected));
        EXPECT_EQ(readBytes(folder.path(expected)), readBytes(folder.path("source")));
    }
    EXPECT_EQ(namesIn(folder).size(), 4U);
}

TEST(CopyToNewFile, SourceThatHasFewerBytesThanItAnnouncedIsAFailure) {
    // The system's own files announce a page and hold a few bytes: what a photo looks like that is cut meanwhile.
    const std::string announced = "/sys/kernel/uevent_seqnum";
    if (fileSize(announced) <= readFile(announced).value_or(std::vector<std::uint8_t>(4096)).size())
        GTEST_SKIP() << "there is no such file here";
    const TemporaryFolder folder;
    OutputPaths paths;
    const WrittenFile file = copyToNewFile(announced, folder.path("a.JPG"), paths);
    EXPECT_EQ(file.path, "");
    EXPECT_EQ(file.failure, "'" + announced + "' became shorter while it was copied.");
    EXPECT_FALSE(entryExists(folder.path("a.JPG")));
    EXPECT_THAT(directoryEntries(folder.path()), Optional(IsEmpty()));
}

TEST(CopyToNewFile, MissingSourceIsAFailureAndLeavesNothing) {
    const TemporaryFolder folder;
    OutputPaths paths;
    const WrittenFile file = copyToNewFile(folder.path("source"), folder.path("a.JPG"), paths);
    EXPECT_EQ(file.path, "");
    EXPECT_EQ(file.failure, readFailure(folder.path("source"), ENOENT));
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(WriteNewFile, FileStandsUnderItsNameAlone) {
    const TemporaryFolder folder;
    const WrittenFile file = writeNewFile(folder.path("a.txt"), "text");
    EXPECT_EQ(file.path, folder.path("a.txt"));
    EXPECT_EQ(file.failure, "");
    EXPECT_THAT(readFile(folder.path("a.txt")), Optional(ElementsAre('t', 'e', 'x', 't')));
    EXPECT_THAT(namesIn(folder), ElementsAre("a.txt"));
}

TEST(WriteNewFile, ExistingFileIsNeverReplaced) {
    const TemporaryFolder folder;
    writeText(folder.path("a.txt"), "old");
    EXPECT_EQ(writeNewFile(folder.path("a.txt"), "new").path, folder.path("a(0).txt"));
    EXPECT_THAT(readFile(folder.path("a.txt")), Optional(ElementsAre('o', 'l', 'd')));
    EXPECT_THAT(namesIn(folder), ElementsAre("a(0).txt", "a.txt"));
}

TEST(WriteNewFile, FilesWrittenAtTheSameTimeAllStay) {
    const TemporaryFolder folder;
    constexpr int kThreads = 8;
    constexpr int kFilesOfEach = 20;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&folder, t] {
            for (int i = 0; i < kFilesOfEach; ++i) {
                writeNewFile(folder.path("a.txt"), std::to_string(t * kFilesOfEach + i));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::vector<std::uint8_t>> contents;
    for (const std::string& name : namesIn(folder)) contents.insert(readFile(folder.path(name)).value());
    EXPECT_EQ(contents.size(), std::size_t{kThreads} * kFilesOfEach);
}

TEST(WriteNewFile, FileMayBeReadByWhomTheProcessAllows) {
    const TemporaryFolder folder;
    const mode_t old = umask(022);
    writeNewFile(folder.path("a.txt"), "");
    umask(old);
    struct stat status;
    ASSERT_EQ(stat(folder.path("a.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

TEST(WriteNewFile, MissingFolderIsAFailureThatNamesTheFile) {
    const TemporaryFolder folder;
    const WrittenFile file = writeNewFile(folder.path("missing/a.txt"), "text");
    EXPECT_EQ(file.path, "");
    EXPECT_THAT(file.failure, HasSubstr(folder.path("missing/a.txt")));
}

TEST(WriteNewFile, NameThatTheFolderCannotTakeLeavesNothingBehind) {
    const TemporaryFolder folder;
    const WrittenFile file = writeNewFile(folder.path(std::string(300, 'x')), "text");
    EXPECT_EQ(file.path, "");
    EXPECT_NE(file.failure, "");
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(WriteNewFile, FullDiskIsAFailureThatLeavesNothingBehind) {
    const TemporaryFolder folder;
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const WrittenFile file = [&] {
        const ResourceLimit fileSize(RLIMIT_FSIZE, 1000);
        return writeNewFile(folder.path("a.txt"), std::string(2000, 'x'));
    }();
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(file.path, "");
    EXPECT_THAT(file.failure, HasSubstr(folder.path("a.txt")));
    EXPECT_THAT(namesIn(folder), IsEmpty());
}

TEST(WriteNewFile, RelativeNameIsWrittenToTheWorkingFolder) {
    const TemporaryFolder folder;
    const fs::path old = fs::current_path();
    fs::current_path(folder.path());
    const WrittenFile file = writeNewFile("a.txt", "text");
    fs::current_path(old);
    EXPECT_EQ(file.path, "a.txt");
    EXPECT_THAT(namesIn(folder), ElementsAre("a.txt"));
}

}  // namespace
}  // namespace ZkMobileBackup
