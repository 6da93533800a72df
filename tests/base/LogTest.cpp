#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "base/Log.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(Log, SinkOfTheHostGetsEveryLine) {
    std::vector<std::string> lines;
    setLogSink([&lines](std::string_view line) { lines.emplace_back(line); });
    CaptureStderr();
    writeLog("first");
    writeLog("second");
    setLogSink({});
    EXPECT_THAT(lines, ElementsAre("first", "second"));
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(Log, WithoutASinkLinesGoToStandardError) {
    setLogSink([](std::string_view) {});
    setLogSink({});
    CaptureStderr();
    writeLog("a line");
    EXPECT_EQ(GetCapturedStderr(), "a line\n");
}

TEST(Log, CallsOfTheSinkNeverOverlap) {
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    int lines = 0;  // guarded by the log alone
    setLogSink([&](std::string_view) {
        if (++inside != 1) overlapped = true;
        ++lines;
        std::this_thread::yield();
        --inside;
    });
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i) writeLog("line");
        });
    }
    for (std::thread& thread : threads) thread.join();
    setLogSink({});
    EXPECT_FALSE(overlapped);
    EXPECT_EQ(lines, 800);
}

}  // namespace
}  // namespace ZkMobileBackup
