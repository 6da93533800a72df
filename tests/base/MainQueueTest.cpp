#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

#include "base/MainQueue.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MainQueue, JobsRunInTheOrderOfPostingAndNotBeforeTheQueueRuns) {
    std::vector<int> order;
    for (int i = 0; i < 3; ++i) MainQueue::post([&order, i] { order.push_back(i); });
    EXPECT_THAT(order, IsEmpty());
    MainQueue::runUntilIdle();
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
}

TEST(MainQueue, JobsRunOnTheThreadThatRunsTheQueue) {
    std::thread::id ran;
    std::thread poster([&ran] { MainQueue::post([&ran] { ran = std::this_thread::get_id(); }); });
    poster.join();
    MainQueue::runUntilIdle();
    EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST(MainQueue, JobPostedByAJobIsRunTooBeforeTheQueueIsIdle) {
    std::vector<int> order;
    MainQueue::post([&order] {
        MainQueue::post([&order] { order.push_back(3); });
        order.push_back(1);
    });
    MainQueue::post([&order] { order.push_back(2); });
    MainQueue::runUntilIdle();
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(MainQueue, IdleQueueRunsAgain) {
    int runs = 0;
    for (int i = 0; i < 2; ++i) {
        MainQueue::post([&runs] { ++runs; });
        MainQueue::runUntilIdle();
    }
    EXPECT_EQ(runs, 2);
}

TEST(MainQueue, RunWaitsForJobsUntilItIsStopped) {
    std::vector<int> order;
    std::thread poster([&order] {
        MainQueue::post([&order] { order.push_back(1); });
        MainQueue::post([&order] {
            order.push_back(2);
            MainQueue::stop();
        });
    });
    MainQueue::run();
    poster.join();
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST(MainQueue, StopEndsTheRunAfterTheJobInHandAndTheOthersWait) {
    std::vector<int> order;
    MainQueue::post([&order] {
        MainQueue::stop();
        order.push_back(1);
    });
    MainQueue::post([&order] { order.push_back(2); });
    MainQueue::run();
    EXPECT_THAT(order, ElementsAre(1));
    MainQueue::runUntilIdle();
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST(MainQueue, StopThatCameWhileNobodyRanEndsTheNextRunAtOnce) {
    bool ran = false;
    MainQueue::stop();
    MainQueue::post([&ran] { ran = true; });
    MainQueue::run();
    EXPECT_FALSE(ran);
    MainQueue::runUntilIdle();
    EXPECT_TRUE(ran);
}

TEST(MainQueue, ExecutorOfTheHostGetsTheJobsInOrder) {
    std::vector<MainQueue::Job> jobs;
    std::vector<int> order;
    MainQueue::setExecutor([&jobs](MainQueue::Job job) { jobs.push_back(std::move(job)); });
    for (int i = 0; i < 3; ++i) MainQueue::post([&order, i] { order.push_back(i); });
    MainQueue::setExecutor({});
    MainQueue::runUntilIdle();
    EXPECT_THAT(order, IsEmpty());
    for (const auto& job : jobs) job();
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
}

TEST(MainQueue, EmptyExecutorBringsBackTheBuiltInQueue) {
    MainQueue::setExecutor([](const MainQueue::Job&) {});
    MainQueue::setExecutor({});
    bool ran = false;
    MainQueue::post([&ran] { ran = true; });
    MainQueue::runUntilIdle();
    EXPECT_TRUE(ran);
}

TEST(MainQueue, JobIsReleasedAfterItsRun) {
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> observer = held;
    MainQueue::post([held = std::move(held)] {});
    EXPECT_FALSE(observer.expired());
    MainQueue::runUntilIdle();
    EXPECT_TRUE(observer.expired());
}

}  // namespace
}  // namespace ZkMobileBackup
