// What one sample takes, in nanoseconds, about: the medians of docs/performance.md, with the widest
// vectors. On a slower processor each thread only gets more to do.
#pragma once

#include "Task.h"

namespace volux::resample::detail {

inline double costAnywhere(const Reading& reading)
{
    if (reading.isOwn) {
        return 100.0;
    }
    return reading.kernel == Kernel::NEAREST ? 4.0 : reading.kernel == Kernel::LINEAR ? 9.0 : 38.0;
}

inline double costAlongAxes(const Reading& reading)
{
    return reading.kernel == Kernel::NEAREST ? 0.4 : reading.kernel == Kernel::LINEAR ? 1.6 : 12.0;
}

// Three numbers read by Linear, for all channels of a voxel.
constexpr double kCostOfField = 30.0;

}  // namespace volux::resample::detail
