#include "base/MainQueue.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <mutex>
#include <utility>

namespace ZkMobileBackup {

namespace {

struct Queue {
    asio::io_context context{1};
    std::mutex mutex;
    MainQueue::Executor executor;  // guarded by mutex
    std::atomic<bool> stopRequested{false};
};

Queue& queue() {
    static Queue& instance = *new Queue;  // never destroyed: jobs may still be posted while the process ends
    return instance;
}

}  // namespace

void MainQueue::setExecutor(Executor executor) {
    const std::lock_guard lock(queue().mutex);
    queue().executor = std::move(executor);
}

void MainQueue::post(Job job) {
    Executor executor;
    {
        const std::lock_guard lock(queue().mutex);
        executor = queue().executor;
    }
    if (executor) {
        executor(std::move(job));
    } else {
        asio::post(queue().context, std::move(job));
    }
}

void MainQueue::runUntilIdle() {
    queue().context.restart();
    queue().context.poll();
}

void MainQueue::run() {
    const auto keepWaiting = asio::make_work_guard(queue().context);
    queue().context.restart();
    while (!queue().stopRequested.exchange(false)) queue().context.run_one();
}

void MainQueue::stop() {
    queue().stopRequested = true;
    asio::post(queue().context, [] {});  // wakes a waiting run
}

}  // namespace ZkMobileBackup
