// Volumes, and images of the same voxels beside them.
#pragma once

#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

#include "Difference.h"
#include "ElementTypes.h"
#include "Names.h"
#include "Volume.h"

namespace volux::test {

/// Makes an image of the memory from `first` on, laid out so.
template <class T>
void wrap(T* first, const Layout& l, VxImage<T>* image)
{
    const auto& [w, h, d] = l.extents;
    require(image->initializeWithPointer(first, w, h, d, l.channels) == SUCCESS,
            "an image does not wrap a volume");
    image->setImageStride(l.strideY, l.strideZ, l.strideC, l.strideX);
}

/// The same of the volume's own block.
template <class T>
void wrap(Volume<T>& volume, VxImage<T>* image)
{
    wrap(volume.first(), volume, image);
    image->setVoxelSize(volume.spacing.x, volume.spacing.y, volume.spacing.z);
}

/// A volume and an image that wraps its block: both read the same memory.
template <class T>
struct WrappedVolume {
    explicit WrappedVolume(Volume<T> source) : volume(std::move(source)) { wrap(volume, &image); }

    Volume<T> volume;
    VxImage<T> image;
};

/// Zeros.
template <class T>
Volume<T> blankVolume(const Layout& layout)
{
    return {layout, std::vector<T>(layout.span())};
}

template <class T>
Volume<T> blankVolume(const Extents& e, unsigned int channels = 1)
{
    return blankVolume<T>(interleaved(e.width, e.height, e.depth, channels));
}

/// Elements that count up from 1, so that each names its place.
template <class T>
Volume<T> countingVolume(const Layout& layout)
{
    Volume<T> volume = blankVolume<T>(layout);
    std::iota(volume.block.begin(), volume.block.end(), T{1});
    return volume;
}

template <class T>
Volume<T> countingVolume(const Extents& e, unsigned int channels = 1)
{
    return countingVolume<T>(interleaved(e.width, e.height, e.depth, channels));
}

/// Elements from the whole range of T, the same every time.
template <class T>
Volume<T> variedVolume(const Extents& e, unsigned int channels = 1)
{
    Volume<T> volume = blankVolume<T>(e, channels);
    for (std::size_t n = 0; n < volume.block.size(); ++n)
        volume.block[n] = someValue<T>(n);
    return volume;
}

/// A row of voxels along x.
template <class T>
Volume<T> rowVolume(std::vector<T> values)
{
    return {interleaved(static_cast<unsigned int>(values.size()), 1, 1, 1), std::move(values)};
}

}  // namespace volux::test
