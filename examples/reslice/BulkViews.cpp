#include "BulkViews.h"

#include <algorithm>
#include <type_traits>
#include <variant>

#include "BulkCall.h"
#include "volux/resample.h"

namespace reslice {
namespace {

namespace resample = volux::resample;

/// Millimetres to voxels, along each axis.
resample::Position inVoxels(const Point& at, const core::VoxelSize& spacing)
{
    return {at.x / spacing.x, at.y / spacing.y, at.z / spacing.z};
}

Point scaled(const Point& direction, double length)
{
    return {direction.x * length, direction.y * length, direction.z * length};
}

Point sum(const Point& a, const Point& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

/// The pixels of the grid, on planes that follow each other from `-reach` along the gaze.
resample::Planes planesOf(const Volume& volume, const Plane& plane, const PixelGrid& grid,
                          double reach, double step)
{
    const core::VoxelSize spacing = volume.spacing();
    const Point gaze = plane.gaze();
    const Point first = sum(plane.at(grid.right(0), grid.down(0)), scaled(gaze, -reach));
    resample::Planes planes;
    planes.origin = inVoxels(first, spacing);
    planes.across = inVoxels(scaled(plane.directions.right, grid.edge), spacing);
    planes.down = inVoxels(scaled(plane.directions.down, grid.edge), spacing);
    planes.step = inVoxels(scaled(gaze, step), spacing);
    planes.width = grid.width;
    planes.height = grid.height;
    return planes;
}

Picture view(const Volume& volume, const resample::Planes& planes, const resample::Slab& slab,
             double outside, const PixelGrid& grid, const Window& window, Job& job)
{
    return std::visit(
        [&](auto* source) {
            std::decay_t<decltype(*source)> seen;
            const resample::Options options =
                bulkOptions(core::Linear(), volume.stored(outside), job);
            requireDone(resample::reslice(*source, planes, &seen, options, slab), volume, job);
            return paint(grid, window, job, [&](unsigned int column, unsigned int row) {
                return volume.shown(static_cast<double>(
                    seen(static_cast<int>(column), static_cast<int>(row), 0, 0)));
            });
        },
        volume.image());
}

}  // namespace

Picture viewPlaneInBulk(const Volume& volume, const Plane& plane, const PixelGrid& grid,
                        double outside, const Window& window, Job& job)
{
    return view(volume, planesOf(volume, plane, grid, 0.0, grid.edge), {}, outside, grid, window,
                job);
}

Picture viewMaximum(const Volume& volume, const Plane& plane, const PixelGrid& grid, double reach,
                    double outside, const Window& window, Job& job)
{
    const core::VoxelSize spacing = volume.spacing();
    const double step = std::min({spacing.x, spacing.y, spacing.z});
    const resample::Slab slab = {pixels(2 * reach, step), resample::Projection::MAXIMUM};
    return view(volume, planesOf(volume, plane, grid, reach, step), slab, outside, grid, window,
                job);
}

}  // namespace reslice
