// An image and, beside it, the same voxels in the form that the oracle reads.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "SamplingOracle.h"
#include "volux/core/VxImage.h"

namespace volux::test {

// An image that wraps the block of an oracle's volume: both read the same memory.
template <class T>
struct WrappedVolume {
    explicit WrappedVolume(oracle::Volume<T> source) : volume(std::move(source))
    {
        const auto size = [](std::int64_t n) { return static_cast<unsigned int>(n); };
        const oracle::Extents& e = volume.extents;
        image.initializeWithPointer(volume.block.data() + volume.origin, size(e.width),
                                    size(e.height), size(e.depth), size(volume.channels));
        image.setImageStride(size(volume.strideY), size(volume.strideZ), size(volume.strideC),
                             size(volume.strideX));
        image.setVoxelSize(volume.spacing.x, volume.spacing.y, volume.spacing.z);
    }

    oracle::Volume<T> volume;
    core::VxImage<T> image;
};

// An interleaved volume of zeros.
template <class T>
oracle::Volume<T> blankVolume(const oracle::Extents& extents, std::int64_t channels = 1)
{
    oracle::Volume<T> volume;
    volume.extents = extents;
    volume.channels = channels;
    volume.strideX = channels;
    volume.strideY = extents.width * channels;
    volume.strideZ = extents.width * extents.height * channels;
    volume.block.resize(static_cast<std::size_t>(volume.strideZ * extents.depth));
    return volume;
}

// An interleaved volume whose elements count up from 1, so that each names its place.
template <class T>
oracle::Volume<T> countingVolume(const oracle::Extents& extents, std::int64_t channels = 1)
{
    oracle::Volume<T> volume = blankVolume<T>(extents, channels);
    T next{1};
    for (T& element : volume.block)
        element = next++;
    return volume;
}

// A row of voxels along x.
template <class T>
oracle::Volume<T> rowVolume(std::vector<T> values)
{
    oracle::Volume<T> volume = blankVolume<T>({static_cast<std::int64_t>(values.size()), 1, 1});
    volume.block = std::move(values);
    return volume;
}

}  // namespace volux::test
