#pragma once

#include <functional>

namespace ZkMobileBackup {

/// The two queues on which the library's own jobs run, several at a time.
enum class QueuePriority { kDefault, kBackground };

/// Runs `job` on a thread of the queue, at once for the caller. Whatever the job uses, it must keep alive itself.
void submitJob(QueuePriority priority, std::function<void()> job);

}  // namespace ZkMobileBackup
