#include "Task.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "ElementTypes.h"
#include "Rows.h"
#include "Work.h"
#include "exact/KnownPolicy.h"

namespace volux::resample::detail {

using core::ErrorType;

namespace {

constexpr unsigned int kMostVoxels = 0x7FFFFFFF;  // along an axis

// Samples that one part of the work takes, about; large enough to be worth a thread.
constexpr std::size_t kPart = 1U << 14U;

template <class T>
bool holds(double value)
{
    using Limits = std::numeric_limits<T>;
    return std::is_floating_point_v<T> ||
           (value >= static_cast<double>(Limits::lowest()) &&
            value <= static_cast<double>(Limits::max()) && std::trunc(value) == value);
}

bool isExtent(std::uint64_t extent)
{
    return extent >= 1 && extent <= kMostVoxels;
}

// Whether no two voxels overlap: each stride is at least the span of the smaller ones.
bool areApart(const Raster& raster)
{
    std::pair<std::int64_t, std::int64_t> axes[] = {{raster.strideX, raster.width},
                                                    {raster.strideY, raster.height},
                                                    {raster.strideZ, raster.depth},
                                                    {raster.strideC, raster.channels}};
    std::sort(std::begin(axes), std::end(axes));
    std::int64_t span = raster.elementBytes;
    for (const auto& [stride, extent] : axes) {
        if (extent > 1 && stride < span) {
            return false;
        }
        span += stride * (extent - 1);
    }
    return true;
}

}  // namespace

bool isSpacing(const core::VoxelSize& spacing)
{
    const auto isDistance = [](double d) { return std::isfinite(d) && d > 0.0; };
    return isDistance(spacing.x) && isDistance(spacing.y) && isDistance(spacing.z);
}

Voxels Source::voxels(unsigned int channel) const
{
    Voxels voxels = {raster.type,
                     raster.at(0, 0, 0, channel),
                     axisOf(region.sourceWidth, region.brickX, raster.width, raster.strideX),
                     axisOf(region.sourceHeight, region.brickY, raster.height, raster.strideY),
                     axisOf(region.sourceDepth, region.brickZ, raster.depth, raster.strideZ),
                     raster.elementBytes};
    voxels.span += voxels.x.span() + voxels.y.span() + voxels.z.span();
    return voxels;
}

void Source::take(unsigned int channel, Block& block) const
{
    if (!reading.isOwn) {
        takeSamples(voxels(channel), reading.kernel, reading.outside, block);
        return;
    }
    for (std::size_t n = 0; n < block.count; ++n) {
        block.samples[n] = own(block.x[n], block.y[n], block.z[n], static_cast<int>(channel));
    }
}

template <class T>
ErrorType readingOf(const Options& options, Reading& reading)
{
    if (options.interpolator == nullptr || options.border == nullptr) {
        return core::ERR_NULL_POINTER;
    }
    if (!holds<T>(options.outside)) {
        return core::ERR_INVALID_ARGUMENT;
    }
    using exact::isExactly;
    const bool isConstant = isExactly<core::Constant>(options.border);
    const bool isNearest = isExactly<core::NearestNeighbor>(options.interpolator);
    const bool isCubic = isExactly<core::Cubic>(options.interpolator);
    reading.kernel = isNearest ? Kernel::NEAREST : isCubic ? Kernel::CUBIC : Kernel::LINEAR;
    reading.outside = {isConstant, static_cast<double>(static_cast<T>(options.outside))};
    reading.isOwn = !(isNearest || isCubic || isExactly<core::Linear>(options.interpolator)) ||
                    !(isConstant || isExactly<core::Replication>(options.border));
    return core::SUCCESS;
}

#define VOLUX_READING(T) template ErrorType readingOf<T>(const Options&, Reading&);
VOLUX_RESAMPLE_FOR_EACH_ELEMENT_TYPE(VOLUX_READING)
#undef VOLUX_READING

ErrorType checkSource(const Raster& source)
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

ErrorType checkOverlap(const Raster& source, const Raster& destination)
{
    const std::less<const unsigned char*> before;
    const bool apart =
        !before(source.data, destination.end()) || !before(destination.data, source.end());
    return apart && areApart(destination) ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

ErrorType run(const Task& task, const Options& options)
{
    const auto share = [&](const auto& rows, const Job& job) {
        return shareOut(job, options,
                        [&](std::size_t first, std::size_t end) { rows(first, end); });
    };
    const Raster& to = task.destination;
    const Reading& reading = task.source.reading;
    const std::size_t rowSamples = std::size_t{to.width} * to.channels;
    const std::size_t rowCount = std::size_t{to.height} * to.depth;
    const double samples = static_cast<double>(rowSamples) * static_cast<double>(rowCount);
    bool isDone = false;
    if (AlignedRows::serve(task)) {
        isDone = share(AlignedRows(task, options.overflow),
                       {rowCount, kPart / rowSamples, samples * alignedSample(reading.kernel)});
    } else {
        const ObliqueRows rows(task, options.overflow);
        isDone = share(rows, {rows.boxes(), 1, samples * task.slab.planes * reading.nanoseconds()});
    }
    return isDone ? core::SUCCESS : kCancelled;
}

}  // namespace volux::resample::detail
