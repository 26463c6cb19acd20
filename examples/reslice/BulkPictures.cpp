#include "BulkPictures.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "BulkCall.h"
#include "BulkViews.h"
#include "EqualEdges.h"
#include "Sheet.h"
#include "ShortNumber.h"
#include "View.h"

namespace reslice {
namespace {

constexpr double kPi = 3.14159265358979323846;

template <class T>
std::unique_ptr<Volume> resized(const core::VxImage<T>& source, const Volume& volume, Job& job)
{
    Layout layout = layoutOfEqualEdges(volume);
    layout.slope = volume.layout().slope;
    layout.intercept = volume.layout().intercept;
    const auto [width, height, depth] = layout.extent;
    std::shared_ptr<T[]> voxels(new T[std::size_t{width} * height * depth]);
    core::VxImage<T> result;
    result.initializeWithPointer(voxels.get(), width, height, depth, 1);
    const double edge = layout.spacing[0];
    volux::resample::Options options = bulkOptions(core::Cubic(), 0.0, job);
    options.border = &core::InterpolationBorderType::REPLICATION;
    requireDone(volux::resample::resize(source, core::VoxelSize(edge, edge, edge),
                                        volux::resample::Align::EDGES, &result, options),
                volume, job);
    return makeVolume<T>(layout, voxels);
}

// The flight.

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

/// The last is followed by the first without a jump.
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

void furnish(Picture& picture, const Volume& volume, const Directions& directions, double edge)
{
    if (volume.orientationKnown())
        addDirections(picture, directions);
    addScale(picture, edge);
}

// The maxima.

constexpr unsigned int kRoundFrames = 36;
constexpr unsigned int kRoundPixels = 300;
constexpr unsigned int kRoundHundredths = 10;
constexpr unsigned int kStillPixels = 440;
constexpr double kAir = -1024.0;
constexpr Window kDenseBone{400.0, 2400.0};  // the headrest is darker

Picture maximum(const Volume& volume, const Plane& plane, double width, double height,
                double pixelEdge, Job& job)
{
    const Point extent = volume.extent(), gaze = plane.gaze();
    const double reach =
        (std::abs(gaze.x) * extent.x + std::abs(gaze.y) * extent.y + std::abs(gaze.z) * extent.z) /
        2;
    const PixelGrid grid{pixels(width, pixelEdge), pixels(height, pixelEdge), pixelEdge};
    Picture picture = viewMaximum(volume, plane, grid, reach, kAir, kDenseBone, job);
    furnish(picture, volume, plane.directions, pixelEdge);
    return picture;
}

std::string windowStory()
{
    return "trilinear, along parallel rays; " + shortNumber(kDenseBone.low) + " to " +
           shortNumber(kDenseBone.high) + " HU";
}

void makeStill(const Volume& volume, const OutputFolder& folder)
{
    Job job("skull-maximum.png", 3 * kTilesOfBulkView);
    const double edge = volume.longestSide() / kStillPixels;
    const Point extent = volume.extent();
    const Plane fromFeet{volume.centre(), directionsOf(Cut::AXIAL)};
    std::vector<Tile> tiles;
    tiles.push_back({maximum(volume, uprightPlane(volume, 0), extent.x, extent.z, edge, job),
                     "from the front"});
    tiles.push_back({maximum(volume, uprightPlane(volume, 90), extent.y, extent.z, edge, job),
                     "from the left"});
    tiles.push_back({maximum(volume, fromFeet, extent.x, extent.y, edge, job), "from the feet"});
    folder.write(
        job, composeSheet("Maximum projection: " + volume.name(), windowStory(), tiles),
        "the brightest voxel on each ray through the head, from the front, the left and the feet");
}

void makeRound(const Volume& volume, const OutputFolder& folder)
{
    Job job("skull-round.gif", kRoundFrames * kTilesOfBulkView);
    Animation animation(job.name(), kRoundHundredths);
    const double edge = volume.longestSide() / kRoundPixels;
    const Point extent = volume.extent();
    const double across = std::hypot(extent.x, extent.y);
    for (unsigned int frame = 0; frame < kRoundFrames; ++frame) {
        const double degrees = 360.0 * frame / kRoundFrames;
        std::vector<Tile> tiles;
        tiles.push_back(
            {maximum(volume, uprightPlane(volume, degrees), across, extent.z, edge, job),
             "seen from " + shortNumber(degrees) + "° (0° the front, 90° the left)"});
        animation.add(composeSheet("Maximum projection: " + volume.name(), windowStory(), tiles));
    }
    folder.write(job, animation, "the same going round the head");
}

}  // namespace

std::unique_ptr<Volume> makeIsotropic(const Volume& volume, Job& job)
{
    return std::visit([&](auto* source) { return resized(*source, volume, job); }, volume.image());
}

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

void makeMaxima(const Volume& volume, const OutputFolder& folder)
{
    makeStill(volume, folder);
    makeRound(volume, folder);
}

}  // namespace reslice
