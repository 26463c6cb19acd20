// Crop and draw: boxes of voxels between two images.
#pragma once

#include <algorithm>
#include <cstdint>

#include "volux/core/VxImage.h"

namespace volux::core {

namespace detail {

// The last of so many voxels, and how many there are from first to last. Both wrap in 32 bits.
constexpr unsigned int lastOf(unsigned int first, unsigned int count)
{
    return static_cast<unsigned int>(std::int64_t{first} + count - 1);
}

constexpr unsigned int countOf(unsigned int first, unsigned int last)
{
    return static_cast<unsigned int>(std::int64_t{last} - first + 1);
}

struct VoxelIndex {
    unsigned int x;
    unsigned int y;
    unsigned int z;
};

// Copies as many voxels as `extent` spans, from one corner to another, z outermost.
template <class T>
void copyBox(const VxImage<T>& src, VoxelIndex from, VxImage<T>& dst, VoxelIndex to,
             const Rect& extent)
{
    const auto at = [](unsigned int corner, unsigned int i) {
        return static_cast<int>(corner + i);
    };
    const ImageSize count(extent.width(), extent.height(), extent.depth(), dst.getChannels());
    for (unsigned int k = 0; k < count.depth; ++k) {
        for (unsigned int j = 0; j < count.height; ++j) {
            for (unsigned int i = 0; i < count.width; ++i) {
                for (unsigned int c = 0; c < count.channels; ++c) {
                    dst(at(to.x, i), at(to.y, j), at(to.z, k), at(c, 0)) =
                        src(at(from.x, i), at(from.y, j), at(from.z, k), at(c, 0));
                }
            }
        }
    }
}

}  // namespace detail

template <class T>
ErrorType VxImage<T>::crop(const Rect& box, VxImage* out)
{
    if (out == nullptr || box.xEnd < box.xStart || box.yEnd < box.yStart || box.zEnd < box.zStart) {
        return ERR_INVALID_ARGUMENT;
    }
    const Rect clipped(box.xStart, std::min(detail::lastOf(0, width), box.xEnd), box.yStart,
                       std::min(detail::lastOf(0, height), box.yEnd), box.zStart,
                       std::min(detail::lastOf(0, depth), box.zEnd));
    // A box beyond the volume wraps to a size that initialize refuses, or, from far enough beyond,
    // to one that it takes; then the box is empty and `out` stays zero.
    const ErrorType result =
        out->initialize(detail::countOf(clipped.xStart, clipped.xEnd),
                        detail::countOf(clipped.yStart, clipped.yEnd),
                        detail::countOf(clipped.zStart, clipped.zEnd), channels);
    if (result != SUCCESS) {
        return result;
    }
    out->setVoxelSize(voxelSizeX, voxelSizeY, voxelSizeZ);  // refused, `out` keeps its own
    detail::copyBox(*this, {clipped.xStart, clipped.yStart, clipped.zStart}, *out, {0, 0, 0},
                    clipped);
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::draw(const VxImage& src, unsigned int x, unsigned int y, unsigned int z)
{
    if (channels != src.channels) {
        return ERR_INVALID_CHANNEL;
    }
    // Channel 0 exists unless there are none.
    if (!hasVoxel(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z), 0)) {
        return ERR_INVALID_ARGUMENT;
    }
    const Rect clipped(x, std::min(detail::lastOf(x, src.width), width - 1U), y,
                       std::min(detail::lastOf(y, src.height), height - 1U), z,
                       std::min(detail::lastOf(z, src.depth), depth - 1U));
    detail::copyBox(src, {0, 0, 0}, *this, {x, y, z}, clipped);
    return SUCCESS;
}

}  // namespace volux::core
