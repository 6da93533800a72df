#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/FileDescriptor.h"
#include "platform/FileLock.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

/// Whether nobody holds the lock on a file.
bool isFree(const std::string& path) {
    const FileDescriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC));
    return file.isOpen() && flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

TEST(FileLock, FileIsMadeHeldAndStaysEmpty) {
    const TemporaryFolder folder;
    {
        const FileLock lock(folder.path("lock"));
        EXPECT_FALSE(isFree(folder.path("lock")));
        EXPECT_EQ(lock.failure(), "");
    }
    EXPECT_TRUE(isFree(folder.path("lock")));
    EXPECT_EQ(std::filesystem::file_size(folder.path("lock")), 0U);
}

TEST(FileLock, FileThatStandsThereKeepsItsContent) {
    const TemporaryFolder folder;
    writeText(folder.path("lock"), "text");
    const FileLock lock(folder.path("lock"));
    EXPECT_EQ(std::filesystem::file_size(folder.path("lock")), 4U);
}

TEST(FileLock, OneHasTheTurnAtATime) {
    constexpr int kThreads = 4;
    constexpr int kTurns = 200;
    const TemporaryFolder folder;
    std::atomic<int> inside{0};
    std::atomic<int> collisions{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < kTurns; ++turn) {
                const FileLock lock(folder.path("lock"));
                if (++inside > 1) ++collisions;
                std::this_thread::yield();
                --inside;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(collisions, 0);
}

TEST(FileLock, WhereItCannotBeMadeNobodyWaits) {
    const TemporaryFolder folder;
    const FileLock first(folder.path("missing/lock"));
    const FileLock second(folder.path("missing/lock"));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    EXPECT_EQ(second.failure(), "Cannot lock '" + folder.path("missing/lock") + "': No such file or directory.");
}

}  // namespace
}  // namespace ZkMobileBackup
