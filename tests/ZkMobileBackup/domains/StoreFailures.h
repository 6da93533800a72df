#pragma once

#include <array>

namespace ZkMobileBackup {

/// The steps of reading a thumbnail store. The linker leads their calls of the C library through StoreFailures.cpp.
enum class StoreStep { kOpen, kSeek, kTellSize, kClose, kAllocate, kRead };

/// Makes one step fail while it lives, as no file makes it fail.
class StoreFailures {
public:
    /// The calls of that step before the `nth` succeed.
    explicit StoreFailures(StoreStep step, int nth = 1);
    ~StoreFailures();
    StoreFailures(const StoreFailures&) = delete;
    StoreFailures& operator=(const StoreFailures&) = delete;
};

/// Counts the calls of each step from its making on.
class StoreCalls {
public:
    StoreCalls();
    int to(StoreStep step) const;

private:
    std::array<int, 6> before_;
};

}  // namespace ZkMobileBackup
