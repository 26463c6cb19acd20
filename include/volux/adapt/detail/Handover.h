/// @file
/// What the adapters share: when they refuse, and how other libraries lay voxels out.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "volux/core/detail/Served.h"
#include "volux/resample/Geometry.h"
#include "volux/resample/View.h"

namespace volux::adapt::detail {

inline void require(bool holds, const std::string& otherwise)
{
    if (!holds)
        throw std::invalid_argument("volux::adapt: " + otherwise);
}

// Only for images that are made: a View refuses other element types itself.
template <class T>
constexpr void requireElementType()
{
    static_assert(core::detail::isElementType<T>,
                  "volux::adapt makes images of unsigned char, short, unsigned short, int, "
                  "unsigned int, float or double.");
}

template <class T>
std::size_t elementsOf(const resample::View<T>& view)
{
    return std::size_t{view.channels} * view.width * view.height * view.depth;
}

// Whether the voxels lie as ITK and VTK expect them: x fastest, channels interleaved, no gaps.
// Nobody steps along an extent of 1, whatever its stride.
template <class T>
bool isContiguous(const resample::View<T>& view)
{
    const unsigned int extents[] = {view.channels, view.width, view.height, view.depth};
    const std::int64_t strides[] = {view.strideC, view.strideX, view.strideY, view.strideZ};
    std::int64_t expected = 1;
    for (int axis = 0; axis < 4; expected *= extents[axis++])
        if (extents[axis] > 1 && strides[axis] != expected)
            return false;
    return true;
}

template <class T>
void requireHandover(const resample::View<T>& view, const resample::Geometry& geometry)
{
    requireElementType<std::remove_const_t<T>>();
    require(view.data != nullptr, "the view has no voxels");
    require(view.width == geometry.width && view.height == geometry.height &&
                view.depth == geometry.depth,
            "the view and the geometry differ in size");
    require(isContiguous(view), "the voxels of the view are not contiguous; copy them first");
}

// The same places in the world by spacings that are not negative: the signs go to the directions.
inline resample::Geometry withoutNegativeSpacing(resample::Geometry geometry)
{
    double* const spacings[] = {&geometry.spacing.x, &geometry.spacing.y, &geometry.spacing.z};
    for (int axis = 0; axis < 3; ++axis) {
        for (auto& row : geometry.direction)
            row[axis] = std::signbit(*spacings[axis]) ? -row[axis] : row[axis];
        *spacings[axis] = std::abs(*spacings[axis]);
    }
    return geometry;
}

}  // namespace volux::adapt::detail
