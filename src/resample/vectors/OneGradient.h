// One sample with its derivatives at a time, where OneSample.h reads one.
#pragma once

#include <limits>

#include "Gradient.h"
#include "OneSample.h"
#include "Slopes.h"

namespace volux::resample::detail {

template <class T, Kernel K>
void gradientsOneByOne(const Channel& channel, const Outside& outside, GradientBlock& block,
                       std::size_t first, std::size_t end)
{
    for (std::size_t n = first; n < end; ++n) {
        const double x = block.x[n];
        const double y = block.y[n];
        const double z = block.z[n];
        exact::Slopes<K, double> slopes(x, y, z);
        block.readings[n] = readWeighted<T, K>(channel, outside, x, y, z, slopes);
        const auto found = slopes.result(block.readings[n]);
        block.slopesX[n] = found.x;
        block.slopesY[n] = found.y;
        block.slopesZ[n] = found.z;
    }
}

}  // namespace volux::resample::detail
