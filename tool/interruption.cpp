#include "tool/interruption.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <unistd.h>
#include <utility>

#include "tool/failure.h"

namespace zkmb {
namespace {

constexpr char kInterrupt = 'i';
constexpr char kQuit = 'q';

// A signal handler may do no more than set a flag and write to a pipe; the waiter thread does the rest.
std::atomic<bool> wasRequested{false};
static_assert(std::atomic<bool>::is_always_lock_free);
int signalPipe[2] = {-1, -1};

void send(char message) {
    [[maybe_unused]] const ssize_t sent = write(signalPipe[1], &message, 1);
}

void handleSignal(int) {
    const int savedError = errno;
    wasRequested.store(true);
    send(kInterrupt);
    errno = savedError;
}

void handleInterrupts() {
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
    // Whoever started the tool may have left the signal blocked, and it may be waiting already.
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_UNBLOCK, &interrupt, nullptr);
}

}  // namespace

Interruption::Interruption() {
    if (pipe(signalPipe) != 0) return;  // Ctrl-C then ends the process, as it does without a handler
    waiter_ = std::thread([this] { waitForSignal(); });
    handleInterrupts();
}

Interruption::~Interruption() {
    if (!waiter_.joinable()) return;
    std::signal(SIGINT, SIG_DFL);
    send(kQuit);
    waiter_.join();
}

bool Interruption::requested() const {
    return wasRequested.load();
}

void Interruption::throwIfRequested() const {
    if (requested()) throw Failure("Interrupted.");
}

Interruption::Registration Interruption::onRequest(StopRequest stop) {
    const std::lock_guard lock(mutex_);
    if (requested()) stop();
    const auto entry = stops_.insert(stops_.end(), std::move(stop));
    return {&*entry, [this, entry](const void*) {
                const std::lock_guard guard(mutex_);
                stops_.erase(entry);
            }};
}

void Interruption::waitForSignal() {
    char message = kQuit;
    while (read(signalPipe[0], &message, 1) == 1 && message == kInterrupt) {
        const std::lock_guard lock(mutex_);
        for (const StopRequest& stop : stops_) stop();
    }
}

}  // namespace zkmb
