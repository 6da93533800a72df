#include "base/Termination.h"

#include <csignal>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace ZkMobileBackup {

namespace {

struct Handler {
    std::mutex mutex;
    std::function<void()> call;  // guarded by mutex
};

Handler& handler() {
    static Handler& instance = *new Handler;  // never destroyed: jobs may still ask while the process ends
    return instance;
}

}  // namespace

void setTerminationHandler(std::function<void()> newHandler) {
    const std::lock_guard lock(handler().mutex);
    handler().call = std::move(newHandler);
}

void requestTermination() {
    std::function<void()> call;
    {
        const std::lock_guard lock(handler().mutex);
        call = handler().call;
    }
    if (call) {
        call();
    } else {
        ::kill(::getpid(), SIGTERM);
    }
}

}  // namespace ZkMobileBackup
