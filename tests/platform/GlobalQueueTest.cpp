#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "platform/GlobalQueue.h"

namespace ZkMobileBackup {
namespace {

int nicenessOfThisThread() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

/// Runs a job on a queue and returns what it returned.
template <typename Job>
auto resultOn(QueuePriority priority, Job job) {
    const auto task = std::make_shared<std::packaged_task<decltype(job())()>>(job);
    auto result = task->get_future();
    submitJob(priority, [task] { (*task)(); });
    return result.get();
}

TEST(GlobalQueue, JobsRunOnAnotherThread) {
    for (const auto priority : {QueuePriority::kDefault, QueuePriority::kBackground}) {
        EXPECT_NE(resultOn(priority, [] { return std::this_thread::get_id(); }), std::this_thread::get_id());
    }
}

TEST(GlobalQueue, BackgroundThreadsHaveALowerPriorityAndTheOthersDoNot) {
    const int own = nicenessOfThisThread();
    EXPECT_GT(resultOn(QueuePriority::kBackground, nicenessOfThisThread), own);
    EXPECT_EQ(resultOn(QueuePriority::kDefault, nicenessOfThisThread), own);
    EXPECT_EQ(nicenessOfThisThread(), own);
}

TEST(GlobalQueue, SubmittingDoesNotWaitForTheJob) {
    for (const auto priority : {QueuePriority::kDefault, QueuePriority::kBackground}) {
        std::promise<void> submitted;
        std::promise<void> done;
        submitJob(priority, [&] {
            submitted.get_future().wait();
            done.set_value();
        });
        submitted.set_value();
        done.get_future().wait();
    }
}

TEST(GlobalQueue, JobsRunSeveralAtATime) {
    for (const auto priority : {QueuePriority::kDefault, QueuePriority::kBackground}) {
        std::promise<void> first;
        std::promise<void> second;
        std::promise<void> done;
        submitJob(priority, [&] {
            first.set_value();
            second.get_future().wait();
            done.set_value();
        });
        submitJob(priority, [&] {
            first.get_future().wait();
            second.set_value();
        });
        done.get_future().wait();
    }
}

TEST(GlobalQueue, EveryJobRunsOnce) {
    constexpr int kJobs = 1000;
    std::mutex mutex;
    std::vector<int> runs(kJobs);
    int left = kJobs;
    std::promise<void> done;
    for (int i = 0; i < kJobs; ++i) {
        submitJob(QueuePriority::kDefault, [&, i] {
            const std::lock_guard lock(mutex);
            ++runs[static_cast<std::size_t>(i)];
            if (--left == 0) done.set_value();
        });
    }
    done.get_future().wait();
    const std::lock_guard lock(mutex);
    EXPECT_EQ(runs, std::vector<int>(kJobs, 1));
}

TEST(GlobalQueue, JobIsReleasedAfterItsRun) {
    std::promise<void> released;
    std::shared_ptr<void> held(nullptr, [&released](void*) { released.set_value(); });
    submitJob(QueuePriority::kBackground, [held = std::move(held)] {});
    released.get_future().wait();
}

}  // namespace
}  // namespace ZkMobileBackup
