#include "VoxelMeans.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "AxisTables.h"
#include "Subsamples.h"
#include "VoxelModes.h"
#include "exact/Rules.h"
#include "resample/vectors/Block.h"
#include "resample/vectors/Elements.h"
#include "resample/vectors/VoxelSums.h"

namespace volux::resample::detail {

namespace {

// Whether the positions of some indices are as many voxels of an axis.
bool areVoxels(const double (&row)[4], int axis, unsigned int first, unsigned int last,
               unsigned int extent)
{
    const double origin = row[3];
    return row[axis] == 1.0 && std::trunc(origin) == origin && origin + first >= 0.0 &&
           origin + last <= extent - 1.0;
}

bool areVoxels(const AffineMap& map, const core::Rect& box, const ResampleRegion& region)
{
    return runsAlongAxes(map) &&
           areVoxels(map.rows[0], 0, box.xStart, box.xEnd, region.sourceWidth) &&
           areVoxels(map.rows[1], 1, box.yStart, box.yEnd, region.sourceHeight) &&
           areVoxels(map.rows[2], 2, box.zStart, box.zEnd, region.sourceDepth);
}

// The voxel that index `n` of the finer grid is.
int voxelOf(const AffineMap& map, int axis, std::size_t n)
{
    return static_cast<int>(map.rows[axis][3] + static_cast<double>(n));
}

// The indices from `first` to `last`.
struct Span {
    int first;
    int last;

    std::size_t count() const
    {
        return first > last ? 0 : static_cast<std::size_t>(last - first) + 1;
    }
};

// Voxels along an axis, and those that a kernel reads besides: there are none beyond the ends.
struct Reached {
    Span voxels;
    Span all;

    Reached(const AffineMap& map, const Axis& axis, int number, Kernel kernel, unsigned int first,
            unsigned int last)
        : voxels{voxelOf(map, number, first), voxelOf(map, number, last)},
          all{axis.clamped(kernel == Kernel::CUBIC ? voxels.first - 1 : voxels.first),
              axis.clamped(voxels.last + reach(kernel) / 2)}
    {
    }
    Span before() const { return {all.first, voxels.first - 1}; }
    Span behind() const { return {voxels.last + 1, all.last}; }
};

const unsigned char* at(const Channel& channel, int x, int y, int z)
{
    return channel.data + static_cast<std::ptrdiff_t>(channel.x.bytes(x) + channel.y.bytes(y) +
                                                      channel.z.bytes(z));
}

bool areFiniteIn(const Channel& channel, Span x, Span y, Span z)
{
    if (x.count() == 0 || y.count() == 0 || z.count() == 0) {
        return true;
    }
    const VoxelBlocks box = {channel.type,
                             at(channel, x.first, y.first, z.first),
                             channel.x.stride,
                             channel.y.stride,
                             channel.z.stride,
                             x.count(),
                             y.count(),
                             z.count(),
                             1};
    return areFinite(box);
}

}  // namespace

bool VoxelMeans::serve(const Task& task)
{
    const Subsamples& n = task.subsamples;
    const Reading& reading = task.source.reading;
    return countOf(n) > 1 && n.x <= kMostAlong && std::uint64_t{n.y} * n.z <= kMostRows &&
           countOf(n) <= kMostVoxels && task.slab.planes == 1 && !reading.isOwn &&
           std::isfinite(reading.outside.value) &&
           areVoxels(task.map, finerBox(task.output, n), task.source.region);
}

bool VoxelMeans::fill(std::size_t slice, Range rows, unsigned int c) const
{
    bool isFilled = areFiniteAround(slice, rows, c);
    for (std::size_t row = rows.first; isFilled && row < rows.end; ++row) {
        isFilled = fillRow(slice, row, c);
    }
    return isFilled;
}

// Whether the voxels beside the blocks of some rows are; those inside show in the means.
bool VoxelMeans::areFiniteAround(std::size_t slice, Range rows, unsigned int c) const
{
    const Kernel kernel = task_.source.reading.kernel;
    if (kernel == Kernel::NEAREST || task_.source.reading.isLabels) {
        return true;  // it has no weights, or does not multiply by them
    }
    const Channel channel = task_.source.channel(c);
    core::Rect output = task_.output;
    output.zStart = output.zEnd = output.zStart + static_cast<unsigned int>(slice);
    output.yEnd = output.yStart + static_cast<unsigned int>(rows.end - 1);
    output.yStart += static_cast<unsigned int>(rows.first);
    const core::Rect finer = finerBox(output, task_.subsamples);
    const Reached x(task_.map, channel.x, 0, kernel, finer.xStart, finer.xEnd);
    const Reached y(task_.map, channel.y, 1, kernel, finer.yStart, finer.yEnd);
    const Reached z(task_.map, channel.z, 2, kernel, finer.zStart, finer.zEnd);
    return areFiniteIn(channel, x.all, y.all, z.before()) &&
           areFiniteIn(channel, x.all, y.all, z.behind()) &&
           areFiniteIn(channel, x.all, y.before(), z.voxels) &&
           areFiniteIn(channel, x.all, y.behind(), z.voxels) &&
           areFiniteIn(channel, x.before(), y.voxels, z.voxels) &&
           areFiniteIn(channel, x.behind(), y.voxels, z.voxels);
}

// The nearest voxels to the centres of `count` voxels of the grid from (i, j, k) on. Those are
// inside the source, as the sub-samples on both sides of them are.
void VoxelMeans::findNearest(const Channel& channel, std::size_t i, std::size_t j, std::size_t k,
                             std::size_t count, const unsigned char** nearest) const
{
    const auto& rows = task_.centres.rows;
    const auto voxel = [&](int axis, std::size_t x, std::size_t y, std::size_t z) {
        const auto number = [](std::size_t n) { return static_cast<double>(n); };
        return exact::firstNeighbour<Kernel::NEAREST>(exact::along(
            exact::rowStart(rows[axis], number(y), number(z)), rows[axis][0], number(x)));
    };
    const int y = channel.y.clamped(voxel(1, i, j, k));
    const int z = channel.z.clamped(voxel(2, i, j, k));
    for (std::size_t n = 0; n < count; ++n) {
        nearest[n] = at(channel, channel.x.clamped(voxel(0, i + n, j, k)), y, z);
    }
}

// The means or modes of blocks, the first of which is voxel (i, j, k) of the grid.
bool VoxelMeans::find(const Channel& channel, const VoxelBlocks& blocks, std::size_t i,
                      std::size_t j, std::size_t k, double* means) const
{
    if (task_.source.reading.isLabels) {
        const unsigned char* nearest[kBlock];
        findNearest(channel, i, j, k, blocks.count, nearest);
        findModes(blocks, nearest, means);
        return true;
    }
    findMeans(blocks, means);
    return task_.source.reading.kernel == Kernel::NEAREST || arePlain(means, blocks.count);
}

bool VoxelMeans::fillRow(std::size_t slice, std::size_t row, unsigned int c) const
{
    const UntypedImage& to = task_.destination;
    const Channel channel = task_.source.channel(c);
    const Subsamples& n = task_.subsamples;
    const core::Rect& box = task_.output;
    const int y = voxelOf(task_.map, 1, (box.yStart + row) * n.y);
    const int z = voxelOf(task_.map, 2, (box.zStart + slice) * n.z);
    double means[kBlock];
    for (std::size_t column = 0; column < to.width; column += kBlock) {
        const int x = voxelOf(task_.map, 0, (box.xStart + column) * n.x);
        const std::size_t count = std::min(kBlock, to.width - column);
        const VoxelBlocks blocks = {channel.type,
                                    at(channel, x, y, z),
                                    channel.x.stride,
                                    channel.y.stride,
                                    channel.z.stride,
                                    n.x,
                                    n.y,
                                    n.z,
                                    count};
        if (!find(channel, blocks, box.xStart + column, box.yStart + row, box.zStart + slice,
                  means)) {
            return false;
        }
        storeElements({to.type, overflow_}, means, count, to.strideX,
                      to.at(static_cast<std::int64_t>(column), static_cast<std::int64_t>(row),
                            static_cast<std::int64_t>(slice), c));
    }
    return true;
}

}  // namespace volux::resample::detail
