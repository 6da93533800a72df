#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <limits>
#include <malloc.h>

namespace ZkMobileBackup {

/// Processor time of this process in seconds: unlike the time on the wall it does not count what others run meanwhile.
inline double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The least time of `runs` runs.
template <typename Work>
double leastSeconds(int runs, Work&& work) {
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < runs; ++i) {
        const double begin = processorSeconds();
        work();
        least = std::min(least, processorSeconds() - begin);
    }
    return least;
}

/// The least time of making something `runs` times. Letting it go again is not counted.
template <typename Make>
double leastSecondsToMake(int runs, Make&& make) {
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < runs; ++i) {
        const double begin = processorSeconds();
        const auto made = make();
        least = std::min(least, processorSeconds() - begin);
    }
    return least;
}

/// Bytes of this process's heap in use.
inline std::size_t heapBytes() {
    const auto usage = mallinfo2();
    return usage.uordblks + usage.hblkhd;
}

}  // namespace ZkMobileBackup
