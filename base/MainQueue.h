#pragma once

#include <functional>

#include "base/Api.h"

namespace ZkMobileBackup {

/// The queue on which a host hears of progress and completion, in the order of posting and never two at a time.
///
/// A host with an event loop of its own hands in an executor. Any other host lets one of its threads run the built-in
/// queue. All functions may be called from any thread.
class ZKMB_API MainQueue {
public:
    using Job = std::function<void()>;
    /// Takes a job and runs it later, keeping the order in which jobs came in.
    using Executor = std::function<void(Job job)>;

    /// Sends every job posted from now on to `executor`; an empty one brings back the built-in queue.
    static void setExecutor(Executor executor);

    static void post(Job job);

    /// Runs jobs of the built-in queue on the calling thread until none is waiting.
    static void runUntilIdle();
    /// Runs jobs of the built-in queue on the calling thread, waiting for more, until `stop` is called. A `stop` that
    /// came while nobody ran ends the next run at once.
    static void run();
    /// Ends `run` after the job in hand. May be called from a job.
    static void stop();
};

}  // namespace ZkMobileBackup
