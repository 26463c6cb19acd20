#include "Checks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <iterator>
#include <utility>

namespace volux::resample::detail {

using core::ErrorType;

namespace {

constexpr unsigned int kMostVoxels = 0x7FFFFFFF;  // along an axis

bool isExtent(std::uint64_t extent)
{
    return extent >= 1 && extent <= kMostVoxels;
}

// Whether no two voxels overlap: each stride is at least the span of the smaller ones.
bool hasItsOwnVoxels(const UntypedImage& image)
{
    std::pair<std::int64_t, std::int64_t> axes[] = {{image.strideX, image.width},
                                                    {image.strideY, image.height},
                                                    {image.strideZ, image.depth},
                                                    {image.strideC, image.channels}};
    std::sort(std::begin(axes), std::end(axes));
    std::int64_t span = image.elementBytes;
    for (const auto& [stride, extent] : axes) {
        if (extent > 1 && stride < span) {
            return false;
        }
        span += stride * (extent - 1);
    }
    return true;
}

}  // namespace

bool areApart(const Memory& a, const Memory& b)
{
    const std::less<const void*> before;
    return a.first == a.end || b.first == b.end || !before(a.first, b.end) ||
           !before(b.first, a.end);
}

Memory memoryOf(const UntypedImage& image)
{
    return {image.data, image.end()};
}

bool isSpacing(const core::VoxelSize& spacing)
{
    const auto isDistance = [](double d) { return std::isfinite(d) && d > 0.0; };
    return isDistance(spacing.x) && isDistance(spacing.y) && isDistance(spacing.z);
}

ErrorType checkSource(const UntypedImage& source)
{
    return source.data == nullptr ? core::ERR_NULL_POINTER : core::SUCCESS;
}

ErrorType checkExtents(const ResampleRegion& region)
{
    const bool sizes = isExtent(region.sourceWidth) && isExtent(region.sourceHeight) &&
                       isExtent(region.sourceDepth);
    return sizes ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

ErrorType checkGrid(const Grid& grid, const Slab& slab)
{
    const bool sizes = isExtent(grid.width) && isExtent(grid.height) &&
                       isExtent(std::uint64_t{grid.depth} * slab.planes);
    return sizes && isSpacing(grid.spacing) && grid.map.isInvertible() ? core::SUCCESS
                                                                       : core::ERR_INVALID_ARGUMENT;
}

ErrorType checkBox(const core::Rect& box, const Grid& grid)
{
    if (box.xStart > box.xEnd || box.xEnd >= grid.width) {
        return core::ERR_INVALID_X;
    }
    if (box.yStart > box.yEnd || box.yEnd >= grid.height) {
        return core::ERR_INVALID_Y;
    }
    return box.zStart > box.zEnd || box.zEnd >= grid.depth ? core::ERR_INVALID_Z : core::SUCCESS;
}

ErrorType checkOverlap(const UntypedImage& source, const UntypedImage& destination)
{
    const bool apart = areApart(memoryOf(source), memoryOf(destination));
    return apart && hasItsOwnVoxels(destination) ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

}  // namespace volux::resample::detail
