#include "View.h"

#include <algorithm>
#include <cmath>

namespace reslice {
namespace {

/// Columns run along the plane's x axis, or along its y axis if the plane lies on its side.
/// Every axis of the patient points to the right, the front or the top, and is seen reversed.
struct SliceView {
    core::VxImage<double> slice;
    double alongX = 0.0, alongY = 0.0;  ///< extents from face to face, millimetres
    double firstX = 0.0, firstY = 0.0;  ///< from face to the first voxel centre
    bool onItsSide = false;
};

void takeSlice(const Volume& volume, Cut cut, unsigned int index, SliceView& view)
{
    volume.slice(cut, index, &view.slice);
    const core::VoxelSize spacing = view.slice.getVoxelSize();
    view.alongX = view.slice.getWidth() * spacing.x;
    view.alongY = view.slice.getHeight() * spacing.y;
    view.firstX = spacing.x / 2;
    view.firstY = spacing.y / 2;
    view.onItsSide = cut == Cut::CORONAL;
}

}  // namespace

unsigned int pixels(double millimetres, double edge)
{
    return static_cast<unsigned int>(std::max(1.0, std::round(millimetres / edge)));
}

Point Plane::at(double right, double down) const
{
    const auto& [u, v] = directions;
    return {centre.x + right * u.x + down * v.x, centre.y + right * u.y + down * v.y,
            centre.z + right * u.z + down * v.z};
}

Point Plane::gaze() const
{
    const auto& [u, v] = directions;
    return {u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
}

Plane uprightPlane(const Volume& volume, double degrees)
{
    constexpr double kDegree = 3.14159265358979323846 / 180.0;
    return {volume.centre(),
            {{-std::cos(degrees * kDegree), -std::sin(degrees * kDegree), 0.0}, {0.0, 0.0, -1.0}}};
}

Picture paint(const PixelGrid& grid, const Window& window, Job& job,
              const std::function<double(unsigned int, unsigned int)>& intensity)
{
    Picture picture(grid.width, grid.height, kPaper);
    for (unsigned int row = 0; row < grid.height; ++row) {
        for (unsigned int column = 0; column < grid.width; ++column) {
            const double grey = window.grey(intensity(column, row));
            const auto byte = static_cast<unsigned char>(std::lround(255.0 * grey));
            picture.blend(static_cast<int>(column), static_cast<int>(row), {byte, byte, byte});
        }
        job.rowDone(row, grid.height);
    }
    return picture;
}

Picture viewPlane(const Volume& volume, const Plane& plane, const PixelGrid& grid,
                  const Policies& policies, const Window& window, Job& job)
{
    return paint(grid, window, job, [&](unsigned int column, unsigned int row) {
        const Point at = plane.at(grid.right(column), grid.down(row));
        return volume.sample(at, policies.interpolator, policies.border, policies.outside);
    });
}

Picture viewCut(const Volume& volume, Cut cut, unsigned int index, double pixelEdge,
                const Window& window, Job& job, core::Interpolator& interpolator)
{
    SliceView view;
    takeSlice(volume, cut, index, view);
    PixelGrid grid{pixels(view.alongX, pixelEdge), pixels(view.alongY, pixelEdge), pixelEdge};
    if (view.onItsSide)
        std::swap(grid.width, grid.height);
    return paint(grid, window, job, [&](unsigned int column, unsigned int row) {
        const double across = (column + 0.5) / grid.width;
        const double downwards = (row + 0.5) / grid.height;
        const double x = view.alongX * (1.0 - (view.onItsSide ? downwards : across)) - view.firstX;
        const double y = view.alongY * (1.0 - (view.onItsSide ? across : downwards)) - view.firstY;
        return view.slice.getDoubleValueReal(x, y, 0.0, 0, &interpolator,
                                             &core::InterpolationBorderType::REPLICATION, 0.0);
    });
}

Directions directionsOf(Cut cut)
{
    const Point left{-1, 0, 0}, back{0, -1, 0}, feet{0, 0, -1};
    if (cut == Cut::AXIAL)
        return {left, back};
    return cut == Cut::SAGITTAL ? Directions{back, feet} : Directions{left, feet};
}

unsigned int slicesOf(const Volume& volume, Cut cut)
{
    const core::ImageSize size = volume.size();
    if (cut == Cut::AXIAL)
        return size.depth;
    return cut == Cut::SAGITTAL ? size.width : size.height;
}

}  // namespace reslice
