#include "tests/ZkMobileBackup/domains/StoreFailures.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <sys/types.h>

namespace ZkMobileBackup {
namespace {

using Step = StoreStep;

std::atomic<bool> armed{false};
Step wantedStep;
int callsLeft;

std::array<std::atomic<int>, 6> callsOf;

bool failsAt(Step step) {
    ++callsOf[static_cast<std::size_t>(step)];
    if (!armed || step != wantedStep || --callsLeft != 0) return false;
    errno = EIO;
    return true;
}

}  // namespace

StoreFailures::StoreFailures(Step step, int nth) {
    wantedStep = step;
    callsLeft = nth;
    armed = true;
}

StoreFailures::~StoreFailures() {
    armed = false;
}

StoreCalls::StoreCalls() {
    std::ranges::copy(callsOf, before_.begin());
}

int StoreCalls::to(StoreStep step) const {
    const auto place = static_cast<std::size_t>(step);
    return callsOf[place] - before_[place];
}

extern "C" {

FILE* __real_fdopen(int descriptor, const char* mode);
int __real_fseeko(FILE* file, off_t offset, int whence);
off_t __real_ftello(FILE* file);
int __real_fclose(FILE* file);
void* __real_calloc(size_t count, size_t size);
size_t __real_fread(void* to, size_t size, size_t count, FILE* file);

FILE* __wrap_fdopen(int descriptor, const char* mode);
int __wrap_fseeko(FILE* file, off_t offset, int whence);
off_t __wrap_ftello(FILE* file);
int __wrap_fclose(FILE* file);
void* __wrap_calloc(size_t count, size_t size);
size_t __wrap_fread(void* to, size_t size, size_t count, FILE* file);

FILE* __wrap_fdopen(int descriptor, const char* mode) {
    return failsAt(Step::kOpen) ? nullptr : __real_fdopen(descriptor, mode);
}

int __wrap_fseeko(FILE* file, off_t offset, int whence) {
    return failsAt(Step::kSeek) ? -1 : __real_fseeko(file, offset, whence);
}

off_t __wrap_ftello(FILE* file) {
    return failsAt(Step::kTellSize) ? -1 : __real_ftello(file);
}

int __wrap_fclose(FILE* file) {
    const int status = __real_fclose(file);
    return failsAt(Step::kClose) ? EOF : status;
}

void* __wrap_calloc(size_t count, size_t size) {
    return failsAt(Step::kAllocate) ? nullptr : __real_calloc(count, size);
}

size_t __wrap_fread(void* to, size_t size, size_t count, FILE* file) {
    return failsAt(Step::kRead) ? 0 : __real_fread(to, size, count, file);
}
}

}  // namespace ZkMobileBackup
