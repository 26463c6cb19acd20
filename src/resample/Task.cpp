#include "Task.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <typeinfo>

#include "Exact.h"
#include "Work.h"
#include "volux/core/detail/ElementTypes.inc"

namespace volux::resample::detail {

using core::ErrorType;

namespace {

constexpr unsigned int kMostVoxels = 0x7FFFFFFF;  // along an axis

// Samples that one part of the work takes, about; large enough to be worth a thread.
constexpr std::size_t kPart = 1U << 14U;

template <class Policy, class Base>
bool isA(const Base& policy)
{
    return typeid(policy) == typeid(Policy);
}

template <class T>
bool holds(double value)
{
    using Limits = std::numeric_limits<T>;
    return std::is_floating_point_v<T> ||
           (value >= static_cast<double>(Limits::lowest()) &&
            value <= static_cast<double>(Limits::max()) && std::trunc(value) == value);
}

bool isSpacing(double spacing)
{
    return std::isfinite(spacing) && spacing > 0.0;
}

bool isExtent(std::uint64_t extent)
{
    return extent >= 1 && extent <= kMostVoxels;
}

// Projects the samples of a further plane onto those of the planes before.
void project(Projection projection, const double* samples, std::size_t count, double* projected)
{
    for (std::size_t n = 0; n < count; ++n) {
        switch (projection) {
            case Projection::MEAN:
                projected[n] += samples[n];
                break;
            case Projection::MAXIMUM:
                projected[n] = samples[n] > projected[n] ? samples[n] : projected[n];
                break;
            case Projection::MINIMUM:
                projected[n] = samples[n] < projected[n] ? samples[n] : projected[n];
                break;
        }
    }
}

// Elements side by side, to where the stride leads.
void scatter(const unsigned char* elements, std::size_t count, std::int64_t bytes,
             std::int64_t stride, unsigned char* to)
{
    for (std::size_t n = 0; n < count; ++n) {
        std::memcpy(to + static_cast<std::ptrdiff_t>(stride) * static_cast<std::ptrdiff_t>(n),
                    elements + n * static_cast<std::size_t>(bytes),
                    static_cast<std::size_t>(bytes));
    }
}

// Rows of the destination along x, each by itself.
class Rows {
public:
    Rows(const Task& task, Overflow overflow) : task_(task), overflow_(overflow) {}

    void operator()(std::size_t first, std::size_t end) const
    {
        Block block;
        for (std::size_t row = first; row < end; ++row) {
            const auto height = task_.destination.height;
            const auto y = static_cast<unsigned int>(row % height);
            const auto z = static_cast<unsigned int>(row / height);
            for (unsigned int c = 0; c < task_.destination.channels; ++c) {
                fill(y, z, c, block);
            }
        }
    }

private:
    void fill(unsigned int y, unsigned int z, unsigned int c, Block& block) const
    {
        const unsigned int width = task_.destination.width;
        for (unsigned int x = 0; x < width; x += kBlock) {
            block.count = std::min<std::size_t>(kBlock, width - x);
            double* const readings = block.samples;
            double projected[kBlock];
            takePlane(x, y, task_.slab.planes * std::size_t{z}, c, block);
            if (task_.slab.planes == 1) {
                store(readings, x, y, z, c, block.count);
                continue;
            }
            std::copy_n(readings, block.count, projected);
            projectPlanes(x, y, z, c, block, projected);
            store(projected, x, y, z, c, block.count);
        }
    }

    void projectPlanes(unsigned int x, unsigned int y, unsigned int z, unsigned int c, Block& block,
                       double* projected) const
    {
        const Slab& slab = task_.slab;
        for (unsigned int plane = 1; plane < slab.planes; ++plane) {
            takePlane(x, y, slab.planes * std::size_t{z} + plane, c, block);
            project(slab.projection, block.samples, block.count, projected);
        }
        for (std::size_t n = 0; slab.projection == Projection::MEAN && n < block.count; ++n) {
            projected[n] /= slab.planes;
        }
    }

    // The samples of a block of one row of one plane of the grid.
    void takePlane(unsigned int x, unsigned int y, std::size_t plane, unsigned int c,
                   Block& block) const
    {
        const core::Rect& box = task_.output;
        const auto& rows = task_.map.rows;
        const Position row =
            rowOf(task_.map, box.yStart + y, box.zStart + static_cast<unsigned int>(plane));
        fillPositions(row, {rows[0][0], rows[1][0], rows[2][0]}, box.xStart + x, block);
        task_.source.take(c, block);
    }

    static Position rowOf(const AffineMap& map, double j, double k)
    {
        const auto coordinate = [&](const double(&row)[4]) {
            return (row[3] + row[2] * k) + row[1] * j;
        };
        return {coordinate(map.rows[0]), coordinate(map.rows[1]), coordinate(map.rows[2])};
    }

    void store(const double* readings, unsigned int x, unsigned int y, unsigned int z,
               unsigned int c, std::size_t count) const
    {
        const Raster& to = task_.destination;
        unsigned char* const first = to.at(x, y, z, c);
        if (to.strideX == to.elementBytes) {
            convert(to.type, overflow_, readings, count, first);
            return;
        }
        alignas(double) unsigned char elements[kBlock * sizeof(double)];
        convert(to.type, overflow_, readings, count, elements);
        scatter(elements, count, to.elementBytes, to.strideX, first);
    }

    const Task& task_;
    Overflow overflow_;
};

}  // namespace

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
    const core::Interpolator& interpolator = *options.interpolator;
    const core::Border& border = *options.border;
    const bool isConstant = isA<core::Constant>(border);
    const bool isNearest = isA<core::NearestNeighbor>(interpolator);
    const bool isCubic = isA<core::Cubic>(interpolator);
    reading.kernel = isNearest ? Kernel::NEAREST : isCubic ? Kernel::CUBIC : Kernel::LINEAR;
    reading.outside = {isConstant, static_cast<double>(static_cast<T>(options.outside))};
    reading.isOwn = !(isNearest || isCubic || isA<core::Linear>(interpolator)) ||
                    !(isConstant || isA<core::Replication>(border));
    return core::SUCCESS;
}

#define VOLUX_READING(T) template ErrorType readingOf<T>(const Options&, Reading&);
VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_READING)
#undef VOLUX_READING
#undef VOLUX_FOR_EACH_ELEMENT_TYPE

ErrorType checkSource(const Raster& source)
{
    if (source.data == nullptr) {
        return core::ERR_NULL_POINTER;
    }
    return source.isEmpty() ? core::ERR_INVALID_ARGUMENT : core::SUCCESS;
}

ErrorType checkGrid(const Grid& grid, const Slab& slab)
{
    const bool sizes = isExtent(grid.width) && isExtent(grid.height) &&
                       isExtent(std::uint64_t{grid.depth} * slab.planes);
    const bool spacing =
        isSpacing(grid.spacing.x) && isSpacing(grid.spacing.y) && isSpacing(grid.spacing.z);
    return sizes && spacing && grid.map.isInvertible() ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
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
    return apart ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

ErrorType run(const Task& task, const Options& options)
{
    const Raster& to = task.destination;
    const std::size_t rowSamples = std::size_t{to.width} * to.channels * task.slab.planes;
    const Rows rows(task, options.overflow);
    const bool isDone = shareOut(std::size_t{to.height} * to.depth, kPart / rowSamples, options,
                                 [&](std::size_t first, std::size_t end) { rows(first, end); });
    return isDone ? core::SUCCESS : kCancelled;
}

}  // namespace volux::resample::detail
