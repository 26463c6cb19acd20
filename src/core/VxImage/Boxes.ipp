// Crops and draws: copies boxes of voxels between two images.
#pragma once

#include <algorithm>
#include <cstdint>

#include "ElementCopy.h"
#include "volux/core/VxImage.h"

namespace volux::core {

namespace detail {

// The last of `count` voxels, and the number of voxels from first to last. Both wrap in 32 bits.
constexpr unsigned int lastOf(unsigned int first, unsigned int count)
{
    return static_cast<unsigned int>(std::int64_t{first} + count - 1);
}

constexpr unsigned int countOf(unsigned int first, unsigned int last)
{
    return static_cast<unsigned int>(std::int64_t{last} - first + 1);
}

// Copies as many voxels as `extent` spans from one place to another, z outermost.
template <class T>
void copyBox(const Place<T>& from, const Place<T>& to, const Rect& extent, unsigned int channels)
{
    copyVoxels(from, to, {extent.depth(), from.layout.strideZ, to.layout.strideZ},
               {extent.height(), from.layout.strideY, to.layout.strideY},
               {extent.width(), from.layout.strideX, to.layout.strideX}, channels);
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
    // A box beyond the volume wraps to a size that initialize refuses. One that starts far enough
    // beyond wraps to a valid size; that box is empty, and `out` stays zero.
    const ErrorType result =
        out->initialize(detail::countOf(clipped.xStart, clipped.xEnd),
                        detail::countOf(clipped.yStart, clipped.yEnd),
                        detail::countOf(clipped.zStart, clipped.zEnd), channels);
    if (result != SUCCESS) {
        return result;
    }
    out->setVoxelSize(voxelSizeX, voxelSizeY, voxelSizeZ);  // if refused, `out` keeps its own
    detail::copyBox<T>({detail::Layout<T>(*this), {clipped.xStart, clipped.yStart, clipped.zStart}},
                       {detail::Layout<T>(*out), {0, 0, 0}}, clipped, channels);
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::draw(const VxImage& src, unsigned int x, unsigned int y, unsigned int z)
{
    if (channels != src.channels) {
        return ERR_INVALID_CHANNEL;
    }
    // Channel 0 exists unless the image has no channels.
    if (!hasVoxel(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z), 0)) {
        return ERR_INVALID_ARGUMENT;
    }
    const Rect clipped(x, std::min(detail::lastOf(x, src.width), width - 1U), y,
                       std::min(detail::lastOf(y, src.height), height - 1U), z,
                       std::min(detail::lastOf(z, src.depth), depth - 1U));
    detail::copyBox<T>({detail::Layout<T>(src), {0, 0, 0}}, {detail::Layout<T>(*this), {x, y, z}},
                       clipped, channels);
    return SUCCESS;
}

}  // namespace volux::core
