// Oblique planes that move through a head.

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "BulkPictures.h"
#include "BulkViews.h"
#include "Sheet.h"
#include "View.h"

namespace reslice {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr unsigned int kFlightFrames = 48;
constexpr unsigned int kFlightPixels = 340;
constexpr unsigned int kFlightHundredths = 9;
constexpr unsigned int kMapPixels = 120;

/// A coronal plane on its way: turned about the body's axis, leant back, and moved along its
/// normal.
struct Pose {
    double turn, lean;  ///< radians
    double way;         ///< millimetres behind the centre
};

/// The first follows the last without a jump.
Pose poseOf(unsigned int frame, double length)
{
    const double phase = 2 * kPi * frame / kFlightFrames;
    return {0.7 * std::sin(phase), 0.3, -0.3 * length * std::cos(phase)};
}

Plane planeOf(const Volume& volume, const Pose& pose)
{
    const double s = std::sin(pose.turn), c = std::cos(pose.turn);
    const double lean = std::sin(pose.lean), upright = std::cos(pose.lean);
    Plane plane{volume.centre(), {{-c, s, 0.0}, {lean * s, lean * c, -upright}}};
    const Point gaze = plane.gaze();
    plane.centre = {plane.centre.x + pose.way * gaze.x, plane.centre.y + pose.way * gaze.y,
                    plane.centre.z + pose.way * gaze.z};
    return plane;
}

/// An axial slice with the line in which the plane cuts it.
Picture mapOf(const Volume& volume, const Picture& axial, double edge, const Plane& plane)
{
    Picture slice = axial.cropped(core::Rect(0, axial.width() - 1, 0, axial.height() - 1));
    const Point extent = volume.extent(), centre = volume.centre(), gaze = plane.gaze();
    const double z = centre.z - plane.centre.z;
    for (unsigned int row = 0; row < slice.height(); ++row)
        for (unsigned int column = 0; column < slice.width(); ++column) {
            const double x = centre.x + extent.x / 2 - (column + 0.5) * edge - plane.centre.x;
            const double y = centre.y + extent.y / 2 - (row + 0.5) * edge - plane.centre.y;
            const double distance = std::abs(x * gaze.x + y * gaze.y + z * gaze.z) / edge;
            slice.blend(static_cast<int>(column), static_cast<int>(row), kAccent,
                        std::clamp(1.5 - distance, 0.0, 1.0));
        }
    return slice;
}

}  // namespace

void makeFlight(const Volume& volume, const Window& window, const OutputFolder& folder)
{
    Job job("flight.gif", kFlightFrames * kTilesOfBulkView + 1);
    Animation animation(job.name(), kFlightHundredths);
    const double length = volume.longestSide();
    const Point extent = volume.extent();
    const double side = 1.1 * length, edge = side / kFlightPixels;
    const PixelGrid grid{pixels(std::min(side, std::hypot(extent.x, extent.y)), edge),
                         pixels(std::min(side, std::hypot(extent.y, extent.z)), edge), edge};
    const double mapEdge = length / kMapPixels;
    const Picture slice =
        viewCut(volume, Cut::AXIAL, slicesOf(volume, Cut::AXIAL) / 2, mapEdge, window, job);
    for (unsigned int frame = 0; frame < kFlightFrames; ++frame) {
        const Plane plane = planeOf(volume, poseOf(frame, extent.y));
        Picture picture = viewPlaneInBulk(volume, plane, grid, window.low, window, job);
        furnish(picture, volume, plane.directions, grid.edge);
        std::vector<Tile> tiles;
        tiles.push_back({std::move(picture), "plane " + std::to_string(frame + 1) + " of " +
                                                 std::to_string(kFlightFrames)});
        tiles.push_back({mapOf(volume, slice, mapEdge, plane), "on the middle slice"});
        animation.add(composeSheet("Flight through the head: " + volume.name(),
                                   "oblique planes, trilinear", tiles));
    }
    folder.write(job, animation, "oblique planes on a flight through the head, trilinear");
}

}  // namespace reslice
