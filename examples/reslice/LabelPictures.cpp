// A label map made smaller: by nearest neighbour, which takes one voxel of each block, and by the
// vote of Labels.

#include <algorithm>
#include <cmath>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "BulkCall.h"
#include "BulkPictures.h"
#include "Sheet.h"
#include "View.h"

namespace reslice {
namespace {

namespace resample = volux::resample;

constexpr unsigned int kPixels = 420;
constexpr double kFactor = 4.0;
constexpr double kNothing = 0.0;  // a label that most maps keep for the background

/// Goes up from 60 to 255 by `step` a label and begins again, so that neighbours look different.
unsigned char level(double label, double step)
{
    return static_cast<unsigned char>(60 + step * std::fmod(std::abs(label), 195 / step));
}

Colour colourOf(double label)
{
    if (label == kNothing || !std::isfinite(label))
        return {0, 0, 0};
    return {level(label, 66.3), level(label, 113.1), level(label, 167.7)};
}

unsigned int reduced(unsigned int extent)
{
    return std::max(1U, static_cast<unsigned int>(std::lround(extent / kFactor)));
}

/// The axial plane through the middle of a volume, of which `map` has all voxels or fewer.
template <class T>
Picture paintMap(const core::VxImage<T>& map, const Volume& volume, Job& job)
{
    const PixelGrid grid{kPixels, kPixels, 1.02 * volume.longestSide() / kPixels};
    const Plane plane{volume.centre(), directionsOf(Cut::AXIAL)};
    const core::VoxelSize spacing = volume.spacing();
    const core::ImageSize size = volume.size();
    Picture picture(grid.width, grid.height, colourOf(kNothing));
    const auto voxel = [](double millimetres, double edge, unsigned int from, unsigned int to) {
        return (millimetres / edge + 0.5) * to / from - 0.5;
    };
    for (unsigned int row = 0; row < grid.height; ++row) {
        for (unsigned int column = 0; column < grid.width; ++column) {
            const Point at = plane.at(grid.right(column), grid.down(row));
            const T label = core::NearestNeighbor()(
                map, voxel(at.x, spacing.x, size.width, map.getWidth()),
                voxel(at.y, spacing.y, size.height, map.getHeight()),
                voxel(at.z, spacing.z, size.depth, map.getDepth()), 0U, core::Constant(), T{0});
            picture.blend(static_cast<int>(column), static_cast<int>(row),
                          colourOf(volume.shown(static_cast<double>(label))));
        }
        job.rowDone(row, grid.height);
    }
    furnish(picture, volume, plane.directions, grid.edge);
    return picture;
}

template <class T>
Picture paintReduced(const core::VxImage<T>& map, const Volume& volume, resample::Options options,
                     Job& job)
{
    core::VxImage<T> smaller;
    options.progress = [&job](double part) { return job.reached(part); };
    requireDone(
        resample::resize(map, reduced(map.getWidth()), reduced(map.getHeight()),
                         reduced(map.getDepth()), resample::Align::EDGES, &smaller, options),
        volume, job);
    return paintMap(smaller, volume, job);
}

std::vector<Tile> tilesOf(const Volume& volume, Job& job)
{
    resample::Options votes{resample::Labels()};
    votes.subsamples = resample::kAntialiased;
    return std::visit(
        [&](const auto* map) {
            std::vector<Tile> tiles;
            tiles.push_back({paintMap(*map, volume, job), "as it is"});
            tiles.push_back({paintReduced(*map, volume, core::NearestNeighbor(), job),
                             "one voxel of each block: NearestNeighbor"});
            tiles.push_back({paintReduced(*map, volume, votes, job),
                             "the vote of each block: Labels, kAntialiased"});
            return tiles;
        },
        volume.image());
}

}  // namespace

void makeLabelPictures(const Volume& volume, const OutputFolder& folder)
{
    Job job("labels.png", 5);
    folder.write(
        job,
        composeSheet("A label map, a quarter as many voxels along each axis: " + volume.name(),
                     describe(volume) + "; colours tell labels apart", tilesOf(volume, job)),
        "a label map made smaller, by nearest neighbour and by the vote of Labels");
}

}  // namespace reslice
