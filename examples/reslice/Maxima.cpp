// The brightest voxel on each ray through a head.

#include <cmath>
#include <string>
#include <vector>

#include "BulkPictures.h"
#include "BulkViews.h"
#include "Sheet.h"
#include "ShortNumber.h"
#include "View.h"

namespace reslice {
namespace {

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

void makeMaxima(const Volume& volume, const OutputFolder& folder)
{
    makeStill(volume, folder);
    makeRound(volume, folder);
}

}  // namespace reslice
