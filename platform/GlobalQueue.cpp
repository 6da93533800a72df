#include "platform/GlobalQueue.h"

#include <algorithm>
#include <asio/post.hpp>
#include <asio/thread_pool.hpp>
#include <cstddef>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace ZkMobileBackup {

namespace {

/// A job may wait for another one's lock, so there are a few threads even where there is one core.
std::size_t threadCount() {
    constexpr std::size_t kFewest = 4;
    return std::max<std::size_t>(std::thread::hardware_concurrency(), kFewest);
}

// The pools are never destroyed: a process may end while jobs are under way, and ending does not wait for them.

asio::thread_pool& defaultPool() {
    static asio::thread_pool& pool = *new asio::thread_pool(threadCount());
    return pool;
}

asio::thread_pool& backgroundPool() {
    static asio::thread_pool& pool = *new asio::thread_pool(threadCount());
    return pool;
}

/// Lowers the calling thread's own priority; what other threads have stays.
void lowerThreadPriority() {
    constexpr int kNiceness = 10;
    thread_local const bool lowered = ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kNiceness) == 0;
    static_cast<void>(lowered);  // a thread that keeps its priority still does the job
}

}  // namespace

void submitJob(QueuePriority priority, std::function<void()> job) {
    if (priority == QueuePriority::kDefault) {
        asio::post(defaultPool(), std::move(job));
        return;
    }
    asio::post(backgroundPool(), [job = std::move(job)] {
        lowerThreadPriority();
        job();
    });
}

}  // namespace ZkMobileBackup
