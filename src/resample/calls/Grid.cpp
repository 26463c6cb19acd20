#include "volux/resample/Grid.h"

#include <algorithm>
#include <cmath>

#include "Directions.h"
#include "Vectors.h"

namespace volux::resample {

namespace {

// One axis of a change of size: output voxel i reads i * scale + offset.
struct AxisChange {
    unsigned int extent;
    double scale;
    double offset;
    double spacing;
};

AxisChange changeOf(unsigned int from, unsigned int to, double scale, double spacing, Align align)
{
    if (to == 1 || (from == 1 && align == Align::CENTRES)) {  // the middles meet
        return {to, scale, ((from - 1.0) - (to - 1.0) * scale) * 0.5, spacing};
    }
    return {to, scale, align == Align::EDGES ? 0.5 * scale - 0.5 : 0.0, spacing};
}

double scaleOfSize(unsigned int from, unsigned int to, Align align)
{
    if (align == Align::EDGES) {
        return static_cast<double>(from) / to;
    }
    // Without two centres to keep, the spacing stays.
    return from < 2 || to < 2 ? 1.0 : (from - 1.0) / (to - 1.0);
}

AxisChange changeOfSize(unsigned int from, unsigned int to, double spacing, Align align)
{
    const double scale = scaleOfSize(from, to, align);
    return changeOf(from, to, scale, spacing * scale, align);
}

// Whole steps in a number of them, of which rounding has taken none away.
double wholeSteps(double steps)
{
    const double nearest = std::round(steps);
    return std::abs(steps - nearest) <= nearest * 0x1p-50 ? nearest : std::floor(steps);
}

// Voxels `to` apart that cover what `count` voxels `from` apart do; 0 if no image holds so many.
unsigned int extentFor(unsigned int count, double from, double to, Align align)
{
    const double extent = align == Align::EDGES ? std::max(std::round(count * from / to), 1.0)
                                                : wholeSteps((count - 1.0) * from / to) + 1.0;
    return extent >= 1.0 && extent <= 2147483647.0 ? static_cast<unsigned int>(extent) : 0U;
}

AxisChange changeOfSpacing(unsigned int count, double from, double to, Align align)
{
    return changeOf(count, extentFor(count, from, to, align), to / from, to, align);
}

Grid gridOf(const AxisChange& x, const AxisChange& y, const AxisChange& z)
{
    Grid grid;
    grid.width = x.extent;
    grid.height = y.extent;
    grid.depth = z.extent;
    grid.spacing = core::VoxelSize(x.spacing, y.spacing, z.spacing);
    const AxisChange* const axes[] = {&x, &y, &z};
    for (int n = 0; n < 3; ++n) {
        grid.map.rows[n][n] = axes[n]->scale;
        grid.map.rows[n][3] = axes[n]->offset;
    }
    return grid;
}

// A source resampled along its own axes.
PlacedGrid placed(const Geometry& source, const Grid& grid)
{
    Geometry geometry = source;
    geometry.width = grid.width;
    geometry.height = grid.height;
    geometry.depth = grid.depth;
    geometry.spacing = grid.spacing;
    geometry.origin = source.toWorld()(grid.map(0, 0, 0));
    return {grid, geometry};
}

core::ImageSize sizeOf(const Geometry& geometry)
{
    return {geometry.width, geometry.height, geometry.depth, 1};
}

// Where a step of the grid leads in the world.
Position stepOf(const AffineMap& toWorld, const AffineMap& map, int column)
{
    const auto element = [&](const double(&row)[4]) {
        return (row[0] * map.rows[0][column] + row[1] * map.rows[1][column]) +
               row[2] * map.rows[2][column];
    };
    return {element(toWorld.rows[0]), element(toWorld.rows[1]), element(toWorld.rows[2])};
}

}  // namespace

Geometry geometryOf(const Geometry& source, const Grid& grid)
{
    const AffineMap toWorld = source.toWorld();
    double lengths[3];
    Geometry geometry;
    geometry.width = grid.width;
    geometry.height = grid.height;
    geometry.depth = grid.depth;
    for (int column = 0; column < 3; ++column) {
        const Position step = stepOf(toWorld, grid.map, column);
        const Position direction = detail::unit(step);
        lengths[column] = detail::lengthOf(step);
        geometry.direction[0][column] = direction.x;
        geometry.direction[1][column] = direction.y;
        geometry.direction[2][column] = direction.z;
    }
    geometry.spacing = core::VoxelSize(lengths[0], lengths[1], lengths[2]);
    geometry.origin = toWorld(grid.map(0, 0, 0));
    return geometry;
}

Grid gridBetween(const Geometry& output, const Geometry& source)
{
    const double outputSpacing[3] = {output.spacing.x, output.spacing.y, output.spacing.z};
    const double sourceSpacing[3] = {source.spacing.x, source.spacing.y, source.spacing.z};
    const detail::Directions directions(source.direction);
    const bool parallel =
        std::equal(&source.direction[0][0], &source.direction[0][0] + 9, &output.direction[0][0]);
    Grid grid;
    grid.width = output.width;
    grid.height = output.height;
    grid.depth = output.depth;
    grid.spacing = output.spacing;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            // Images that point the same way differ by exactly nothing in direction.
            const double turned = parallel ? (row == column ? 1.0 : 0.0)
                                           : directions.along(row, output.direction[0][column],
                                                              output.direction[1][column],
                                                              output.direction[2][column]);
            grid.map.rows[row][column] = turned * outputSpacing[column] / sourceSpacing[row];
        }
        grid.map.rows[row][3] =
            directions.along(row, output.origin.x - source.origin.x,
                             output.origin.y - source.origin.y, output.origin.z - source.origin.z) /
            sourceSpacing[row];
    }
    return grid;
}

Grid gridOfSize(const core::ImageSize& source, const core::VoxelSize& spacing, unsigned int width,
                unsigned int height, unsigned int depth, Align align)
{
    return gridOf(changeOfSize(source.width, width, spacing.x, align),
                  changeOfSize(source.height, height, spacing.y, align),
                  changeOfSize(source.depth, depth, spacing.z, align));
}

Grid gridOfSpacing(const core::ImageSize& source, const core::VoxelSize& spacing,
                   const core::VoxelSize& wanted, Align align)
{
    return gridOf(changeOfSpacing(source.width, spacing.x, wanted.x, align),
                  changeOfSpacing(source.height, spacing.y, wanted.y, align),
                  changeOfSpacing(source.depth, spacing.z, wanted.z, align));
}

PlacedGrid gridOfSize(const Geometry& source, unsigned int width, unsigned int height,
                      unsigned int depth, Align align)
{
    return placed(source, gridOfSize(sizeOf(source), source.spacing, width, height, depth, align));
}

PlacedGrid gridOfSpacing(const Geometry& source, const core::VoxelSize& wanted, Align align)
{
    return placed(source, gridOfSpacing(sizeOf(source), source.spacing, wanted, align));
}

PlacedGrid gridOfCrop(const Geometry& source, const core::Rect& box)
{
    Grid grid;
    grid.width = box.width();
    grid.height = box.height();
    grid.depth = box.depth();
    grid.spacing = source.spacing;
    grid.map.rows[0][3] = box.xStart;
    grid.map.rows[1][3] = box.yStart;
    grid.map.rows[2][3] = box.zStart;
    return placed(source, grid);
}

Grid gridOfPlanes(const Planes& planes)
{
    Grid grid;
    grid.width = planes.width;
    grid.height = planes.height;
    grid.depth = planes.count;
    grid.spacing = planes.spacing;
    const bool alone = planes.step.x == 0.0 && planes.step.y == 0.0 && planes.step.z == 0.0;
    const Position step = alone ? detail::crossProduct(planes.across, planes.down) : planes.step;
    const Position* const columns[4] = {&planes.across, &planes.down, &step, &planes.origin};
    for (int column = 0; column < 4; ++column) {
        grid.map.rows[0][column] = columns[column]->x;
        grid.map.rows[1][column] = columns[column]->y;
        grid.map.rows[2][column] = columns[column]->z;
    }
    return grid;
}

PlacedGrid gridOfPlanes(const Geometry& source, const Planes& planes, unsigned int slab)
{
    Grid grid = gridOfPlanes(planes);
    for (auto& row : grid.map.rows) {
        row[3] += row[2] * ((slab - 1.0) * 0.5);
        row[2] *= slab;
    }
    const Geometry geometry = geometryOf(source, grid);
    grid.spacing = geometry.spacing;
    return {grid, geometry};
}

}  // namespace volux::resample
