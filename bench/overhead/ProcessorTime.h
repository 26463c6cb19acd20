// A clock that stops while other processes run.
#pragma once

#include <ctime>

namespace volux::bench {

/// Nanoseconds that this thread has had a processor for.
inline double processorTime()
{
    std::timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return 1e9 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec);
}

}  // namespace volux::bench
