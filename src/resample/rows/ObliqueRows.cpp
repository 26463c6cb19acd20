#include "ObliqueRows.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include "Displacement.h"
#include "FieldOfView.h"
#include "Subsamples.h"
#include "exact/Rules.h"
#include "resample/vectors/Elements.h"

namespace volux::resample::detail {

namespace {

// What is filled together, row after row: neighbouring rows and slices read the same cache lines,
// which a whole slice would drive out.
constexpr unsigned int kColumns = 128;
constexpr unsigned int kBoxSide = 16;
static_assert(kColumns <= kBlock);

unsigned int parts(unsigned int extent, unsigned int most)
{
    return (extent - 1) / most + 1;
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

Position rowOf(const AffineMap& map, double j, double k)
{
    return {exact::rowStart(map.rows[0], j, k), exact::rowStart(map.rows[1], j, k),
            exact::rowStart(map.rows[2], j, k)};
}

}  // namespace

ObliqueRows::ObliqueRows(const Task& task, Overflow overflow)
    : task_(task), overflow_(overflow), nearest_(task)
{
    const std::uint64_t planes = std::uint64_t{task.slab.planes} * task.subsamples.z;
    boxRows_ = std::min(std::max(kBoxSide / task.subsamples.y, 1U), task.destination.height);
    boxSlices_ = std::min(static_cast<unsigned int>(std::max<std::uint64_t>(kBoxSide / planes, 1)),
                          task.destination.depth);
    bands_ = parts(task.destination.height, boxRows_);
}

std::size_t ObliqueRows::boxes() const
{
    return std::size_t{bands_} * parts(task_.destination.depth, boxSlices_);
}

void ObliqueRows::operator()(std::size_t first, std::size_t end) const
{
    for (std::size_t box = first; box < end; ++box) {
        fillBox(static_cast<unsigned int>(box % bands_) * boxRows_,
                static_cast<unsigned int>(box / bands_) * boxSlices_);
    }
}

void ObliqueRows::fillBox(unsigned int yFirst, unsigned int zFirst) const
{
    const UntypedImage& to = task_.destination;
    const unsigned int yEnd = yFirst + std::min(boxRows_, to.height - yFirst);
    const unsigned int zEnd = zFirst + std::min(boxSlices_, to.depth - zFirst);
    Part part;
    const std::unique_ptr<Fold> fold = foldOf(task_, kColumns);
    part.fold = fold.get();
    for (unsigned int x = 0; x < to.width; x += kColumns) {
        part.count = std::min(kColumns, to.width - x);
        part.isRead = isRead(x, static_cast<unsigned int>(part.count), yFirst, yEnd, zFirst, zEnd);
        for (unsigned int z = zFirst; z < zEnd; ++z) {
            for (unsigned int y = yFirst; y < yEnd; ++y) {
                for (unsigned int c = 0; c < to.channels; ++c) {
                    fill(x, y, z, c, part);
                }
            }
        }
    }
}

// Whether every position of some columns of a box is read.
bool ObliqueRows::isRead(unsigned int x, unsigned int columns, unsigned int y, unsigned int yEnd,
                         unsigned int z, unsigned int zEnd) const
{
    const core::Rect& box = task_.output;
    const unsigned int planes = task_.slab.planes;
    const core::Rect positions(box.xStart + x, box.xStart + x + columns - 1, box.yStart + y,
                               box.yStart + yEnd - 1, box.zStart + z * planes,
                               box.zStart + zEnd * planes - 1);
    return !task_.source.reading.edgeEnds ||
           isInView(reachOf(task_.map, finerBox(positions, task_.subsamples)), task_.source.region);
}

void ObliqueRows::fill(unsigned int x, unsigned int y, unsigned int z, unsigned int c,
                       Part& part) const
{
    const UntypedImage& to = task_.destination;
    double projected[kColumns];
    const double* readings = part.readings;
    takePlane(x, y, task_.slab.planes * std::size_t{z}, c, part);
    if (task_.slab.planes > 1) {
        std::copy_n(part.readings, part.count, projected);
        projectPlanes(x, y, z, c, part, projected);
        readings = projected;
    }
    storeElements({to.type, overflow_}, readings, part.count, to.strideX, to.at(x, y, z, c));
}

void ObliqueRows::projectPlanes(unsigned int x, unsigned int y, unsigned int z, unsigned int c,
                                Part& part, double* projected) const
{
    const Slab& slab = task_.slab;
    for (unsigned int plane = 1; plane < slab.planes; ++plane) {
        takePlane(x, y, slab.planes * std::size_t{z} + plane, c, part);
        project(slab.projection, part.readings, part.count, projected);
    }
    for (std::size_t n = 0; slab.projection == Projection::MEAN && n < part.count; ++n) {
        projected[n] /= slab.planes;
    }
}

// The readings of a part of one row of one plane of the grid.
void ObliqueRows::takePlane(unsigned int x, unsigned int y, std::size_t plane, unsigned int c,
                            Part& part) const
{
    const core::Rect& box = task_.output;
    const unsigned int j = box.yStart + y;
    const unsigned int k = box.zStart + static_cast<unsigned int>(plane);
    if (part.fold == nullptr) {
        takeRow(box.xStart + x, j, k, c, part);
        return;
    }
    const Subsamples& n = task_.subsamples;
    const std::size_t voxels = part.count;
    double nearest[kColumns];
    if (task_.source.reading.isLabels) {
        nearest_.read(box.xStart + x, j, k, c, voxels, nearest);
    }
    part.fold->begin(voxels, nearest);
    do {
        for (std::size_t row = 0; row < std::size_t{n.y} * n.z; ++row) {
            foldRow((box.xStart + x) * n.x, voxels * n.x,
                    j * n.y + static_cast<unsigned int>(row % n.y),
                    k * n.z + static_cast<unsigned int>(row / n.y), c, part);
        }
    } while (part.fold->goesOn());
    part.count = voxels;
    std::copy_n(part.fold->finish(), voxels, part.readings);
}

// Folds `count` samples of a row of the finer grid, from index `first` on.
void ObliqueRows::foldRow(unsigned int first, std::size_t count, unsigned int j, unsigned int k,
                          unsigned int c, Part& part) const
{
    for (std::size_t n = 0; n < count; n += part.count) {
        part.count = std::min(kBlock, count - n);
        takeRow(first + static_cast<unsigned int>(n), j, k, c, part);
        part.fold->take(n, part.readings, part.count);
    }
}

// The samples of a part of one row of the map's indices, from index `first` on.
void ObliqueRows::takeRow(unsigned int first, unsigned int j, unsigned int k, unsigned int c,
                          Part& part) const
{
    const auto& rows = task_.map.rows;
    const Position row = rowOf(task_.map, j, k);
    const Position step = {rows[0][0], rows[1][0], rows[2][0]};
    if (task_.displacement) {
        takeDisplaced(row, step, first, c, part);
        return;
    }
    fillPositions(row, step, first, part);
    if (part.isRead) {
        task_.source.read(c, part);
    } else {
        readInView(row, step, first, c, part);
    }
}

// All channels of a voxel are read at one position, which the field is read for once.
void ObliqueRows::takeDisplaced(Position row, Position step, unsigned int first, unsigned int c,
                                Part& part) const
{
    if (c == 0 || task_.slab.planes > 1 || part.fold != nullptr) {
        fillPositions(row, step, first, part);
        displace(*task_.displacement, part);
    }
    readWhereInView(task_.source, c, part);
}

// Reads a block whose positions begin with index `first`; nothing is read for those out of view,
// which no brick need hold.
void ObliqueRows::readInView(Position row, Position step, unsigned int first, unsigned int c,
                             Block& block) const
{
    const ResampleRegion& region = task_.source.region;
    const double outside = task_.source.reading.outside.value;
    const std::size_t count = block.count;
    Range range = inView({0, count}, block.x, region.sourceWidth);
    range = inView(range, block.y, region.sourceHeight);
    range = inView(range, block.z, region.sourceDepth);
    if (!range.isEmpty()) {
        if (range.first > 0) {
            fillPositions(row, step, first + static_cast<unsigned int>(range.first), block);
        }
        block.count = range.end - range.first;
        task_.source.read(c, block);
        std::copy_backward(block.readings, block.readings + block.count,
                           block.readings + range.end);
    }
    std::fill(block.readings, block.readings + range.first, outside);
    std::fill(block.readings + range.end, block.readings + count, outside);
    block.count = count;
}

}  // namespace volux::resample::detail
