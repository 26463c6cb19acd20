// The read of one voxel, and what a border reads outside.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "RunTime.h"
#include "exact/Index.h"
#include "exact/Layout.h"
#include "volux/core/VxImage.h"

namespace volux::core::detail {

// Out of line: few voxels are outside, and what clamping or a table needs would burden the reads
// inside.
template <class T, class B>
[[gnu::noinline]] T askBorder(B& border, const VxImage<T>& image, int x, int y, int z,
                              unsigned int c, T value)
{
    const unsigned int width = image.getWidth();
    const unsigned int height = image.getHeight();
    const unsigned int depth = image.getDepth();
    if constexpr (std::is_same_v<B, Border>) {
        return RunTime::fetch(border, image, x, y, z, c, value, width, height, depth);
    } else {
        return border.fetch(image, x, y, z, c, value, width, height, depth);
    }
}

template <class T, class B>
T readOutside(B& border, const VxImage<T>& image, int x, int y, int z, unsigned int c, T value)
{
    if constexpr (std::is_same_v<B, Constant>) {
        return value;
    } else if constexpr (std::is_same_v<B, Border*>) {
        return askBorder(*border, image, x, y, z, c, value);
    } else {
        return askBorder(border, image, x, y, z, c, value);
    }
}

// Channel c of a voxel inside, whose indices are not negative: without their signs a processor
// extends them to 64 bits by itself.
template <class T>
const T* voxelInside(const Layout<T>& layout, int x, int y, int z, unsigned int c)
{
    const auto steps = [](int index) { return std::int64_t{static_cast<unsigned int>(index)}; };
    return layout.data + static_cast<std::ptrdiff_t>(
                             layout.strideX * steps(x) + layout.strideY * steps(y) +
                             layout.strideZ * steps(z) + layout.strideC * static_cast<int>(c));
}

// Channel c of voxel (x, y, z), or what the border reads there. The channel is not tested.
template <class T, class B>
T voxelOrBorder(const VxImage<T>& image, int x, int y, int z, unsigned int c, B& border, T value)
{
    const bool inside = exact::isInside(x, image.getWidth()) &&
                        exact::isInside(y, image.getHeight()) &&
                        exact::isInside(z, image.getDepth());
    return inside ? *voxelInside(Layout<T>(image), x, y, z, c)
                  : readOutside(border, image, x, y, z, c, value);
}

}  // namespace volux::core::detail
