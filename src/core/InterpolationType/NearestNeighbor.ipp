// Nearest neighbour: one voxel, as it is.
#pragma once

#include "VoxelLookup.h"
#include "exact/Rules.h"

namespace volux::core {

namespace detail {

template <class T, class B>
inline T kernel(NearestNeighbor&, const VxImage<T>& image, double x, double y, double z,
                unsigned int c, B& border, T value)
{
    constexpr auto kNearest = exact::Kernel::NEAREST;
    return voxelOrBorder(image, exact::firstNeighbour<kNearest>(x),
                         exact::firstNeighbour<kNearest>(y), exact::firstNeighbour<kNearest>(z), c,
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
