#include <csignal>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include "base/Termination.h"

namespace ZkMobileBackup {
namespace {

TEST(Termination, HandlerIsCalledOnTheThreadThatAsks) {
    std::thread::id caller;
    setTerminationHandler([&] { caller = std::this_thread::get_id(); });
    std::thread::id asking;
    std::thread([&] {
        asking = std::this_thread::get_id();
        requestTermination();
    }).join();
    setTerminationHandler({});
    EXPECT_EQ(caller, asking);
}

TEST(Termination, HandlerMayReplaceItself) {
    int calls = 0;
    setTerminationHandler([&] {
        ++calls;
        setTerminationHandler([&] { calls += 10; });
    });
    requestTermination();
    requestTermination();
    setTerminationHandler({});
    EXPECT_EQ(calls, 11);
}

/// Asks for the end with the default handler; the signal is delivered before the process goes on.
void askWithoutHandler() {
    setTerminationHandler([] {});
    setTerminationHandler({});
    requestTermination();
    _exit(0);
}

TEST(TerminationDeathTest, DefaultEndsTheProcessBySignal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(askWithoutHandler(), testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
}  // namespace ZkMobileBackup
