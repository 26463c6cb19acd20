// Nearest neighbour: one voxel, as it is.
#pragma once

#include "../Arithmetic.h"
#include "VoxelLookup.h"

namespace volux::core {

template <class T, class B>
T NearestNeighbor::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                              B border, T value) noexcept(detail::byValue<NearestNeighbor, B>())
{
    return detail::voxelOrBorder(image, detail::lowerVoxel(x + 0.5), detail::lowerVoxel(y + 0.5),
                                 detail::lowerVoxel(z + 0.5), c, border, value);
}

}  // namespace volux::core
