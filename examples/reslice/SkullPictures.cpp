#include "SkullPictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Failure.h"
#include "Sheet.h"
#include "ShortNumber.h"
#include "SkullProjections.h"
#include "View.h"
#include "Window.h"

namespace reslice {
namespace {

constexpr unsigned int kTile = 440;  // pixels
const Window kBone = Window::ofLevel(400.0, 1800.0);

/// The kernel overshoots at sharp edges, and a conversion to short would wrap.
short saturated(double intensity)
{
    constexpr double lowest = std::numeric_limits<short>::min();
    constexpr double highest = std::numeric_limits<short>::max();
    return static_cast<short>(std::lround(std::clamp(intensity, lowest, highest)));
}

/// Unequal edges multiply the voxels, and a ray has a step for each along its way.
void requireFeasible(const std::array<double, 3>& extent, const std::string& path)
{
    constexpr double kMostVoxels = 1 << 28, kLongestRay = 1 << 15;
    const auto& [width, height, depth] = extent;
    if (width * height * depth <= kMostVoxels && std::max({width, height, depth}) <= kLongestRay)
        return;
    cannotRead(path, "resampled to voxels of equal edges, it would have " + shortNumber(width) +
                         " x " + shortNumber(height) + " x " + shortNumber(depth) +
                         " of them, which is too many");
}

/// Voxels whose edges are the shortest of the volume's, so that no detail is lost.
Layout isotropicLayout(const Volume& volume)
{
    const core::VoxelSize spacing = volume.spacing();
    const double edge = std::min({spacing.x, spacing.y, spacing.z});
    const auto [x, y, z] = volume.extent();
    const auto voxels = [edge](double length) { return std::round(length / edge); };
    const std::array<double, 3> extent = {voxels(x), voxels(y), voxels(z)};
    requireFeasible(extent, volume.path());
    return {
        volume.path(), {pixels(x, edge), pixels(y, edge), pixels(z, edge)}, {edge, edge, edge}, {}};
}

/// Tricubic, at the physical positions of the new voxels; their first faces coincide.
std::unique_ptr<Volume> makeIsotropic(const Volume& volume, Job& job)
{
    const Layout layout = isotropicLayout(volume);
    const auto& [width, height, depth] = layout.extent;
    const double edge = layout.spacing[0];
    const core::VoxelSize old = volume.spacing();
    std::shared_ptr<short[]> voxels(new short[std::size_t{width} * height * depth]);
    short* next = voxels.get();
    for (unsigned int z = 0; z < depth; ++z) {
        for (unsigned int y = 0; y < height; ++y)
            for (unsigned int x = 0; x < width; ++x) {
                const Point at{(x + 0.5) * edge - old.x / 2, (y + 0.5) * edge - old.y / 2,
                               (z + 0.5) * edge - old.z / 2};
                *next++ =
                    saturated(volume.sample(at, &core::InterpolationType::CUBIC,
                                            &core::InterpolationBorderType::REPLICATION, 0.0));
            }
        job.rowDone(z, depth);
    }
    return makeVolume<short>(layout, voxels);
}

double pixelEdge(const Volume& volume)
{
    const Point extent = volume.extent();
    return std::max({extent.x, extent.y, extent.z}) / kTile;
}

Tile furnished(Picture picture, Cut cut, const Volume& volume, const std::string& caption)
{
    addDirections(picture, directionsOf(cut));
    addScale(picture, pixelEdge(volume));
    return {std::move(picture), caption};
}

Tile cutTile(const Volume& volume, Cut cut, double part, const std::string& name, Job& job)
{
    const auto index = static_cast<unsigned int>(part * slicesOf(volume, cut));
    Picture picture = viewCut(volume, cut, index, pixelEdge(volume), kBone, job);
    return furnished(std::move(picture), cut, volume, name + std::to_string(index));
}

void makeCuts(const Volume& volume, Job& job, const OutputFolder& folder, const std::string& story)
{
    std::vector<Tile> tiles;
    tiles.push_back(cutTile(volume, Cut::AXIAL, 0.35, "axial, z = ", job));
    tiles.push_back(cutTile(volume, Cut::CORONAL, 0.5, "coronal, y = ", job));
    tiles.push_back(cutTile(volume, Cut::SAGITTAL, 0.5, "sagittal, x = ", job));
    folder.write(job, composeSheet("Skull, bone window: " + volume.name(), story, tiles),
                 "three cuts through the skull, resampled to voxels of equal edges, bone window");
}

}  // namespace

void makeSkullPictures(const Volume& volume, const OutputFolder& folder)
{
    Job job("skull-cuts.png", 4);
    const std::unique_ptr<Volume> isotropic = makeIsotropic(volume, job);
    const std::string story = describe(volume) + ", resampled to " + describe(*isotropic);
    makeCuts(*isotropic, job, folder, story);
    Job projections("skull-rays.png", kProjections);
    folder.write(projections, projectSkull(*isotropic, pixelEdge(*isotropic), projections),
                 "the skull's surface and its brightest voxels, along rays");
}

}  // namespace reslice
