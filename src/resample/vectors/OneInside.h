// One sample of a channel that is prepared once: where all its neighbours are inside, they are
// addressed without a question; where some are not, OneSample.h reads it.
#pragma once

#include <cstdint>

#include "OneSample.h"
#include "Single.h"
#include "exact/Truncation.h"

namespace volux::resample::detail {

inline Axis axisOf(const SampledChannel& channel, int n)
{
    const int extent = static_cast<int>(channel.extents[n]);
    return {extent, 0, extent - 1, channel.strides[n]};
}

inline Channel channelOf(const SampledChannel& sampled)
{
    return {{},
            static_cast<const unsigned char*>(sampled.data),
            axisOf(sampled, 0),
            axisOf(sampled, 1),
            axisOf(sampled, 2),
            0};
}

template <class T, Kernel K>
[[gnu::noinline]] double readEdge(const SampledChannel& sampled, double x, double y, double z)
{
    return readOne<T, K>(channelOf(sampled), {sampled.isConstant, sampled.outside}, x, y, z);
}

// The neighbours of a sample of the interior, of voxels that are contiguous along x or not.
template <class T, bool Contiguous>
struct Inside {
    const unsigned char* first;
    std::int64_t strideX;
    std::int64_t strideY;
    std::int64_t strideZ;

    Inside(const SampledChannel& channel, double x, double y, double z, std::int64_t back)
        : strideX(Contiguous ? kBytes<T> : channel.strides[0]),
          strideY(channel.strides[1]),
          strideZ(channel.strides[2])
    {
        first = static_cast<const unsigned char*>(channel.data) +
                (exact::truncateToInt64(x) * strideX + exact::truncateToInt64(y) * strideY +
                 exact::truncateToInt64(z) * strideZ - back);
    }

    const unsigned char* row(int j, int k) const { return first + strideY * j + strideZ * k; }

    // A voxel and the next along x.
    exact::Pair pair(const unsigned char* voxel) const
    {
        if constexpr (Contiguous) {
            return exact::widened(reinterpret_cast<const T*>(voxel));
        } else {
            return {elementAt<T>(voxel), elementAt<T>(voxel + strideX)};
        }
    }
};

// For processors whose vectors hold fewer than four doubles.
template <class T, Kernel K, bool Contiguous>
double readInside(const SampledChannel& channel, double x, double y, double z)
{
    const auto isIn = [&](double position, int axis) {
        return position >= channel.begin[axis] && position < channel.end[axis];
    };
    if (!isIn(x, 0) || !isIn(y, 1) || !isIn(z, 2)) {
        return readEdge<T, K>(channel, x, y, z);
    }
    const Inside<T, Contiguous> voxels(channel, x, y, z, K == Kernel::CUBIC ? channel.back : 0);
    return exact::Place<K>(x, y, z).sum([&](int j, int k) {
        return [&voxels, row = voxels.row(j, k)](int i) {
            return voxels.pair(row + 2 * i * voxels.strideX);
        };
    });
}

}  // namespace volux::resample::detail
