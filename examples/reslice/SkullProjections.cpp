#include "SkullProjections.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "Sheet.h"
#include "ShortNumber.h"
#include "View.h"

namespace reslice {
namespace {

constexpr double kAir = -1024.0;
constexpr double kBoneSurface = 650.0;  // Hounsfield units; above the headrest
constexpr Window kDenseBone{100.0, 2700.0};

double dot(const Point& a, const Point& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Point along(const Point& from, const Point& direction, double way)
{
    return {from.x + way * direction.x, from.y + way * direction.y, from.z + way * direction.z};
}

double densityAt(const Volume& volume, const Point& at)
{
    return volume.sample(at, &core::InterpolationType::LINEAR,
                         &core::InterpolationBorderType::CONSTANT, kAir);
}

/// An upright observer.
struct Observer {
    const Volume& volume;
    Plane plane;
    Point gaze;
    double reach;  ///< half the length of a ray
    PixelGrid grid;

    Observer(const Volume& seen, double degrees, double pixelEdge);
    Point start(unsigned int column, unsigned int row) const
    {
        return along(plane.at(grid.right(column), grid.down(row)), gaze, -reach);
    }
};

Observer::Observer(const Volume& seen, double degrees, double pixelEdge)
    : volume(seen), plane(uprightPlane(seen, degrees)), gaze(plane.gaze()), reach(0.0), grid{}
{
    const Point extent = seen.extent();
    reach = std::hypot(extent.x, extent.y) / 2;
    const double across = std::max(extent.x, extent.y);
    grid = {pixels(across, pixelEdge), pixels(extent.z, pixelEdge), pixelEdge};
}

double brightestOn(const Observer& observer, const Point& start)
{
    const double step = observer.volume.spacing().x;
    double brightest = kAir;
    for (double way = 0.0; way < 2 * observer.reach; way += step)
        brightest =
            std::max(brightest, densityAt(observer.volume, along(start, observer.gaze, way)));
    return brightest;
}

/// Where the ray meets bone, by steps and then by halving the last; negative if it never does.
double meetsBone(const Observer& observer, const Point& start)
{
    const double step = observer.volume.spacing().x / 2;
    const auto inBone = [&](double way) {
        return densityAt(observer.volume, along(start, observer.gaze, way)) > kBoneSurface;
    };
    double way = 0.0;
    while (way < 2 * observer.reach && !inBone(way))
        way += step;
    if (way >= 2 * observer.reach)
        return -1.0;
    double before = way - step;
    for (int halving = 0; halving < 6; ++halving) {
        const double middle = (before + way) / 2;
        (inBone(middle) ? way : before) = middle;
    }
    return way;
}

/// The direction in which the density falls.
Point outward(const Volume& volume, const Point& at)
{
    const double step = volume.spacing().x;
    const auto slope = [&](const Point& axis) {
        return densityAt(volume, along(at, axis, -step)) - densityAt(volume, along(at, axis, step));
    };
    const Point fall{slope({1, 0, 0}), slope({0, 1, 0}), slope({0, 0, 1})};
    const double length = std::sqrt(dot(fall, fall));
    return length > 0.0 ? along({0, 0, 0}, fall, 1.0 / length) : Point{0, 0, 0};
}

/// Between 0 and 1: lit from above the observer's left shoulder.
double shadeOn(const Observer& observer, const Point& start)
{
    const double way = meetsBone(observer, start);
    if (way < 0.0)
        return 0.0;
    const auto& [right, down] = observer.plane.directions;
    const Point light =
        along(along(along({0, 0, 0}, observer.gaze, -0.75), right, -0.4), down, -0.53);
    const Point normal = outward(observer.volume, along(start, observer.gaze, way));
    return 0.12 + 0.88 * std::max(0.0, dot(normal, light));
}

using RayReading = std::function<double(const Observer&, const Point&)>;

Tile projection(const Observer& observer, const std::string& caption, const Window& window,
                const RayReading& reading, Job& job)
{
    Picture picture = paint(observer.grid, window, job, [&](unsigned int column, unsigned int row) {
        return reading(observer, observer.start(column, row));
    });
    furnish(picture, observer.volume, observer.plane.directions, observer.grid.edge);
    return {std::move(picture), caption};
}

}  // namespace

Picture projectSkull(const Volume& volume, double pixelEdge, Job& job)
{
    const Observer front(volume, 0.0, pixelEdge), half(volume, 40.0, pixelEdge),
        left(volume, 90.0, pixelEdge);
    const Window whole{0.0, 1.0};
    std::vector<Tile> tiles;
    tiles.push_back(projection(front, "surface, from the front", whole, shadeOn, job));
    tiles.push_back(projection(half, "surface, from the front and left", whole, shadeOn, job));
    tiles.push_back(
        projection(left, "brightest voxels, from the left", kDenseBone, brightestOn, job));
    return composeSheet("Skull, along parallel rays: " + volume.name(),
                        "trilinear; surface at " + shortNumber(kBoneSurface) +
                            " HU; brightest voxels from " + shortNumber(kDenseBone.low) + " to " +
                            shortNumber(kDenseBone.high) + " HU",
                        tiles);
}

}  // namespace reslice
