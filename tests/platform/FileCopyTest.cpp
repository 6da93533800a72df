#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include "platform/FileCopy.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

std::string textOf(const std::string& path) {
    const std::vector<std::uint8_t> bytes = readBytes(path);
    return {bytes.begin(), bytes.end()};
}

class FileCopyTest : public testing::Test {
protected:
    FileCopyTest() { writeText(source(), "0123456789"); }

    std::string source() const { return folder.path("source"); }
    std::string target() const { return folder.path("target.MOV"); }

    const TemporaryFolder folder;
    OutputPaths paths;
};

TEST_F(FileCopyTest, PiecesMakeTheWholeFile) {
    FileCopy copy(source(), target(), paths);
    EXPECT_EQ(copy.left(), 10U);
    EXPECT_EQ(copy.copyNext(4), 4U);
    EXPECT_EQ(copy.copyNext(4), 4U);
    EXPECT_EQ(copy.left(), 2U);
    EXPECT_EQ(copy.copyNext(4), 2U);
    const WrittenFile written = copy.finish();
    EXPECT_EQ(written.path, target());
    EXPECT_EQ(written.failure, "");
    EXPECT_EQ(textOf(target()), "0123456789");
}

TEST_F(FileCopyTest, PieceAtTheEndIsEmpty) {
    FileCopy copy(source(), target(), paths);
    EXPECT_EQ(copy.copyNext(10), 10U);
    EXPECT_EQ(copy.copyNext(10), 0U);
    EXPECT_EQ(copy.finish().failure, "");
}

TEST_F(FileCopyTest, EmptyFileGivesAnEmptyOne) {
    writeText(source(), "");
    FileCopy copy(source(), target(), paths);
    EXPECT_EQ(copy.copyNext(1), 0U);
    EXPECT_EQ(copy.finish().path, target());
    EXPECT_EQ(fs::file_size(target()), 0U);
}

TEST_F(FileCopyTest, TargetIsThereFromTheBeginning) {
    const FileCopy copy(source(), target(), paths);
    EXPECT_TRUE(copy.isOpen());
    EXPECT_EQ(fs::file_size(target()), 0U);
}

TEST_F(FileCopyTest, WhatWasCopiedStaysWithoutTheRest) {
    { FileCopy(source(), target(), paths).copyNext(3); }
    EXPECT_EQ(textOf(target()), "012");
}

TEST_F(FileCopyTest, FileOfTheSameNameIsKept) {
    writeText(target(), "earlier");
    FileCopy copy(source(), target(), paths);
    copy.copyNext(10);
    EXPECT_EQ(copy.finish().path, folder.path("target(0).MOV"));
    EXPECT_EQ(textOf(target()), "earlier");
    EXPECT_EQ(textOf(folder.path("target(0).MOV")), "0123456789");
}

TEST_F(FileCopyTest, LinkOfTheSameNameIsNotFollowed) {
    fs::create_symlink(folder.path("elsewhere"), target());
    FileCopy copy(source(), target(), paths);
    copy.copyNext(10);
    EXPECT_EQ(copy.finish().path, folder.path("target(0).MOV"));
    EXPECT_FALSE(fs::exists(folder.path("elsewhere")));
}

TEST_F(FileCopyTest, CopiesAtOnceNeverShareAName) {
    constexpr int kThreads = 8;
    std::vector<std::string> paths(kThreads);
    std::vector<std::thread> threads;
    for (std::string& path : paths) {
        threads.emplace_back([this, &path] {
            OutputPaths own;
            FileCopy copy(source(), target(), own);
            copy.copyNext(10);
            path = copy.finish().path;
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::ranges::sort(paths);
    EXPECT_EQ(std::ranges::adjacent_find(paths), paths.end());
    for (const std::string& path : paths) EXPECT_EQ(textOf(path), "0123456789");
}

TEST_F(FileCopyTest, MissingSourceLeavesAnEmptyFile) {
    fs::remove(source());
    FileCopy copy(source(), target(), paths);
    EXPECT_FALSE(copy.isOpen());
    const WrittenFile written = copy.finish();
    EXPECT_EQ(written.path, "");
    EXPECT_THAT(written.failure, HasSubstr("'" + source() + "'"));
    EXPECT_EQ(textOf(target()), "");
}

TEST_F(FileCopyTest, OnlyRegularFilesAreCopied) {
    fs::create_directory(folder.path("folder"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    for (const std::string& path : {folder.path("folder"), folder.path("pipe"), std::string("/dev/zero")}) {
        FileCopy copy(path, target(), paths);
        EXPECT_FALSE(copy.isOpen());
        EXPECT_THAT(copy.finish().failure, HasSubstr("'" + path + "'"));
    }
}

TEST_F(FileCopyTest, MissingFolderIsNotMade) {
    const std::string path = folder.path("missing/target.MOV");
    FileCopy copy(source(), path, paths);
    EXPECT_FALSE(copy.isOpen());
    EXPECT_THAT(copy.finish().failure, HasSubstr("'" + path + "'"));
    EXPECT_FALSE(fs::exists(folder.path("missing")));
}

TEST_F(FileCopyTest, SourceThatBecomesShorterIsAFailure) {
    FileCopy copy(source(), target(), paths);
    fs::resize_file(source(), 6);
    EXPECT_EQ(copy.copyNext(8), 6U);
    EXPECT_EQ(copy.copyNext(8), 0U);
    const WrittenFile written = copy.finish();
    EXPECT_EQ(written.path, "");
    EXPECT_THAT(written.failure, HasSubstr("shorter"));
    EXPECT_EQ(textOf(target()), "012345");
}

TEST_F(FileCopyTest, SourceThatGrowsIsCopiedAsFarAsAsked) {
    FileCopy copy(source(), target(), paths);
    std::ofstream(source(), std::ios::app) << "abcdef";
    EXPECT_EQ(copy.copyNext(12), 12U);
    EXPECT_EQ(copy.left(), 0U);
    EXPECT_EQ(copy.finish().failure, "");
    EXPECT_EQ(textOf(target()), "0123456789ab");
}

TEST_F(FileCopyTest, RestEndsWhereTheSourceEndsAtThatMoment) {
    FileCopy copy(source(), target(), paths);
    copy.copyNext(4);
    std::ofstream(source(), std::ios::app) << "abcdef";
    copy.copyRest();
    std::ofstream(source(), std::ios::app) << "too late";
    EXPECT_EQ(copy.finish().failure, "");
    EXPECT_EQ(textOf(target()), "0123456789abcdef");
}

TEST_F(FileCopyTest, RestOfNothingIsEmpty) {
    FileCopy copy(source(), target(), paths);
    copy.copyNext(10);
    copy.copyRest();
    EXPECT_EQ(copy.finish().failure, "");
    EXPECT_EQ(textOf(target()), "0123456789");
}

TEST_F(FileCopyTest, RestOfASourceThatBecameShorterIsAFailure) {
    FileCopy copy(source(), target(), paths);
    copy.copyNext(4);
    fs::resize_file(source(), 3);
    copy.copyRest();
    EXPECT_THAT(copy.finish().failure, HasSubstr("shorter"));
    EXPECT_EQ(textOf(target()), "0123");
}

TEST_F(FileCopyTest, EarlyFinishOfAPartIsAFailureThatNamesIt) {
    FileCopy copy(source(), target(), paths);
    copy.copyNext(4);
    const WrittenFile written = copy.finishEarly();
    EXPECT_EQ(written.path, "");
    EXPECT_THAT(written.failure, HasSubstr("'" + target() + "'"));
    EXPECT_EQ(textOf(target()), "0123");
}

TEST_F(FileCopyTest, EarlyFinishOfTheWholeIsNone) {
    FileCopy copy(source(), target(), paths);
    copy.copyNext(10);
    EXPECT_EQ(copy.finishEarly().path, target());
}

TEST_F(FileCopyTest, EarlyFinishWithoutATargetKeepsItsReason) {
    const std::string path = folder.path("missing/target.MOV");
    FileCopy copy(source(), path, paths);
    EXPECT_EQ(copy.finishEarly().failure, writeFailure(path, ENOENT));
}

TEST_F(FileCopyTest, SizeIsNotLimitedTo32Bits) {
    constexpr std::uint64_t kSize = (std::uint64_t{5} << 30) + 1;
    fs::resize_file(source(), kSize);
    const FileCopy copy(source(), target(), paths);
    EXPECT_EQ(copy.left(), kSize);
}

TEST_F(FileCopyTest, SourceOnAnotherFileSystemIsCopied) {
    if (!fs::is_directory("/dev/shm")) GTEST_SKIP() << "there is no second file system";
    const std::string other = "/dev/shm/" + fs::path(folder.path()).filename().string();
    fs::copy_file(source(), other);
    FileCopy copy(other, target(), paths);
    EXPECT_EQ(copy.copyNext(20), 10U);
    EXPECT_EQ(copy.finish().failure, "");
    EXPECT_EQ(textOf(target()), "0123456789");
    fs::remove(other);
}

TEST_F(FileCopyTest, TargetThatTakesNoMoreIsAFailure) {
    WrittenFile written;
    {
        const FileSizeLimit limit(7);
        FileCopy copy(source(), target(), paths);
        EXPECT_EQ(copy.copyNext(10), 7U);
        written = copy.finish();
    }
    EXPECT_EQ(written.path, "");
    EXPECT_THAT(written.failure, HasSubstr("'" + target() + "'"));
    EXPECT_EQ(textOf(target()), "0123456");
}

}  // namespace
}  // namespace ZkMobileBackup
