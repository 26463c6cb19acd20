// Nearest neighbour: one voxel, as it is.
#pragma once

#include "../Arithmetic.h"
#include "VoxelLookup.h"

namespace volux::core {

namespace detail {

template <class T, class B>
inline T kernel(NearestNeighbor&, const VxImage<T>& image, double x, double y, double z,
                unsigned int c, B& border, T value)
{
    return voxelOrBorder(image, lowerVoxel(x + 0.5), lowerVoxel(y + 0.5), lowerVoxel(z + 0.5), c,
                         border, value);
}

}  // namespace detail

template <class T, class B>
T NearestNeighbor::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                              B border, T value) noexcept(detail::byValue<NearestNeighbor, B>())
{
    return detail::kernel(*this, image, x, y, z, c, border, value);
}

}  // namespace volux::core
