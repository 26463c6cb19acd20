// The volumes and positions on which other libraries sample beside volux_core.
#pragma once

#include <cstdint>
#include <vector>

#include "support/Random.h"
#include "support/RandomScenes.h"
#include "support/WrappedVolume.h"

namespace volux::test {

constexpr double kLargestVoxel = 1000.0;  // differences are told as a part of it

inline double randomVoxel(Random& random)
{
    return (2.0 * fraction(random) - 1.0) * kLargestVoxel;
}

// One channel, x fastest, voxels of either sign.
inline Volume<double> plainVolume(Random& random)
{
    Volume<double> volume =
        blankVolume<double>({random.between(1, 9), random.between(1, 9), random.between(1, 9)});
    for (double& voxel : volume.block)
        voxel = randomVoxel(random);
    return volume;
}

// Within five voxels of the volume: beyond, all libraries only repeat themselves.
inline double nearCoordinate(Random& random, unsigned int extent)
{
    for (;;) {
        const double coordinate = randomCoordinate(random, extent);
        if (coordinate >= -5.0 && coordinate <= static_cast<double>(extent) + 5.0)
            return coordinate;
    }
}

inline oracle::Position nearPosition(Random& random, const Extents& extents)
{
    return {nearCoordinate(random, extents.width), nearCoordinate(random, extents.height),
            nearCoordinate(random, extents.depth)};
}

// What volux_core samples at one position with any kernel and border.
template <class I, class B>
double sampled(const core::VxImage<double>& image, const oracle::Position& p, double outside)
{
    return image.getDoubleValueReal<I, B>(p.x, p.y, p.z, 0, I(), B(), outside);
}

}  // namespace volux::test
