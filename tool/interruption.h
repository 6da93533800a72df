#pragma once

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace zkmb {

/// Turns the first Ctrl-C into stop requests; a second one ends the process at once. One instance a process.
class Interruption {
public:
    using StopRequest = std::function<void()>;

    /// Keeps a stop request in force as long as it lives.
    using Registration = std::shared_ptr<const void>;

    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Whether Ctrl-C was pressed. Any thread.
    bool requested() const;
    /// Throws the failure that ends an interrupted command, if Ctrl-C was pressed.
    void throwIfRequested() const;

    /// Calls `stop` when Ctrl-C is pressed, on a thread of its own; at once when it was pressed before.
    [[nodiscard]] Registration onRequest(StopRequest stop);

private:
    void waitForSignal();

    std::mutex mutex_;
    std::list<StopRequest> stops_;  // guarded by mutex_
    std::thread waiter_;
};

}  // namespace zkmb
