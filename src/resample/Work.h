// Work in parts, on several threads.
#pragma once

#include <cstddef>
#include <functional>

#include "Voxels.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// What one sample takes, in nanoseconds, about: the medians of docs/performance.md, with the widest
// vectors. A slower processor only gives each thread more to do.
inline constexpr double kOwnSample = 100.0;  // by a policy of the caller's
constexpr double obliqueSample(Kernel kernel)
{
    return kernel == Kernel::NEAREST ? 4.0 : kernel == Kernel::LINEAR ? 9.0 : 38.0;
}
constexpr double alignedSample(Kernel kernel)
{
    return kernel == Kernel::NEAREST ? 0.4 : kernel == Kernel::LINEAR ? 1.6 : 12.0;
}

struct Job {
    std::size_t items;   // what parts are counted in
    std::size_t most;    // of them in a part
    double nanoseconds;  // that all of them take one thread, about
};

// Calls `work(first, end)` for parts of a job and the progress callback after each part: on the
// caller's thread and on as many others as the options allow and the job is worth, all of which
// have ended when it returns; or on the options' executor. False if parts were left out, since the
// callback said stop or the executor left them out; parts that had begun are finished. What a call
// throws ends the work likewise, and is thrown.
bool shareOut(const Job& job, const Options& options,
              const std::function<void(std::size_t, std::size_t)>& work);

}  // namespace volux::resample::detail
