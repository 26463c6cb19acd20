// A head read through a smooth field of displacements, and its grid.

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "BulkCall.h"
#include "BulkPictures.h"
#include "Sheet.h"
#include "View.h"

namespace reslice {
namespace {

namespace resample = volux::resample;

constexpr double kPi = 3.14159265358979323846;
constexpr unsigned int kTile = 400;  // pixels
constexpr unsigned int kNodes = 17;  // of the field, across and along the head
constexpr unsigned int kCells = 16;  // of the grid that is drawn, along the longest side
constexpr double kStrength = 0.06;   // of the longest side

/// The world is in millimetres from the centre of the first voxel, along the patient's axes.
resample::Geometry geometryOf(const Volume& volume)
{
    const auto [width, height, depth, channels] = volume.size();
    return {width, height, depth, volume.spacing()};
}

/// A picture of a plane.
resample::Geometry geometryOf(const Plane& plane, const PixelGrid& grid)
{
    const Point first = plane.at(grid.right(0), grid.down(0));
    const Point& right = plane.directions.right;
    const Point& down = plane.directions.down;
    const Point gaze = plane.gaze();
    return {grid.width,
            grid.height,
            1,
            core::VoxelSize(grid.edge, grid.edge, grid.edge),
            {first.x, first.y, first.z},
            {{right.x, down.x, gaze.x}, {right.y, down.y, gaze.y}, {right.z, down.z, gaze.z}}};
}

/// Vectors in millimetres that swirl about four places and die out towards the faces.
resample::Geometry fillField(const Volume& volume, core::VxImage<float>& field)
{
    field.initialize(kNodes, kNodes, 1, 3);
    const Point extent = volume.extent();
    const core::VoxelSize voxel = volume.spacing();
    const double length = kStrength * volume.longestSide();
    for (int j = 0; j < static_cast<int>(kNodes); ++j)
        for (int i = 0; i < static_cast<int>(kNodes); ++i) {
            const double x = kPi * i / (kNodes - 1), y = kPi * j / (kNodes - 1);
            const double window = std::sin(x) * std::sin(y);
            field(i, j, 0, 0) = static_cast<float>(length * window * std::sin(2 * y));
            field(i, j, 0, 1) = static_cast<float>(length * window * std::sin(2 * x));
        }
    const double edge = kNodes - 1;
    return {kNodes,
            kNodes,
            1,
            core::VoxelSize(extent.x / edge, extent.y / edge, 2 * extent.z),
            {-voxel.x / 2, -voxel.y / 2, volume.centre().z}};
}

/// Lines of the result's plane, each point of which `place` moves.
template <class Place>
void drawGrid(Picture& picture, const Plane& plane, const PixelGrid& grid, const Place& place)
{
    const auto draw = [&](double right, double down) {
        const Point at = place(plane.at(right, down));
        const Point way{at.x - plane.centre.x, at.y - plane.centre.y, at.z - plane.centre.z};
        const auto pixel = [&](const Point& u, unsigned int pixels) {
            const double length = way.x * u.x + way.y * u.y + way.z * u.z;
            return static_cast<int>(std::floor(length / grid.edge + pixels / 2.0));
        };
        picture.blend(pixel(plane.directions.right, grid.width),
                      pixel(plane.directions.down, grid.height), kAccent, 0.75);
    };
    const unsigned int cell = std::max(grid.width, grid.height) / kCells + 1;
    for (unsigned int row = 0; row < grid.height; ++row)
        for (unsigned int column = 0; column < grid.width; ++column)
            if (column % cell == cell / 2 || row % cell == cell / 2)
                draw(grid.right(column), grid.down(row));
}

Picture viewWarped(const Volume& volume, const resample::WarpedGrid& warped, const PixelGrid& grid,
                   const Window& window, Job& job)
{
    return std::visit(
        [&](auto* source) {
            core::VxImage<double> seen;
            resample::Options options = bulkOptions(core::Linear(), 0.0, job);
            options.border = &core::InterpolationBorderType::REPLICATION;
            options.edgeExtends = true;  // half a pixel at the faces
            requireDone(resample::resample(*source, warped.grid, warped.warp, &seen, options),
                        volume, job);
            return paint(grid, window, job, [&](unsigned int column, unsigned int row) {
                return volume.shown(seen(static_cast<int>(column), static_cast<int>(row), 0, 0));
            });
        },
        volume.image());
}

}  // namespace

void makeWarp(const Volume& volume, const Window& window, const OutputFolder& folder)
{
    Job job("warp.png", 3);
    const Point extent = volume.extent();
    const core::VoxelSize spacing = volume.spacing();
    const double edge = volume.longestSide() / kTile;
    const PixelGrid grid{pixels(extent.x, edge), pixels(extent.y, edge), edge};
    const Plane plane{volume.centre(), directionsOf(Cut::AXIAL)};
    core::VxImage<float> field;
    const resample::Geometry there = fillField(volume, field);
    const resample::WarpedGrid warped =
        resample::warpBetween(geometryOf(plane, grid), there, geometryOf(volume), field);
    Picture result = viewWarped(volume, warped, grid, window, job);
    drawGrid(result, plane, grid, [](const Point& at) { return at; });
    Picture source =
        viewPlane(volume, plane, grid,
                  {&core::InterpolationType::LINEAR, &core::InterpolationBorderType::REPLICATION},
                  window, job);
    drawGrid(source, plane, grid, [&](const Point& at) {
        const resample::Position voxel = warped.warp({at.x, at.y, at.z});
        return Point{voxel.x * spacing.x, voxel.y * spacing.y, voxel.z * spacing.z};
    });
    furnish(result, volume, plane.directions, edge);
    furnish(source, volume, plane.directions, edge);
    std::vector<Tile> tiles;
    tiles.push_back({std::move(source), "the source, and where the result reads it"});
    tiles.push_back({std::move(result), "the result, and its own grid"});
    folder.write(job,
                 composeSheet("A slice through a smooth field: " + volume.name(),
                              "the field leads from the result to the source; trilinear", tiles),
                 "an axial slice through a smooth field of displacements, with its grid");
}

}  // namespace reslice
