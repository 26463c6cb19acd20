#include "SkullPictures.h"

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BulkPictures.h"
#include "EqualEdges.h"
#include "Sheet.h"
#include "SkullProjections.h"
#include "View.h"
#include "Window.h"

namespace reslice {
namespace {

constexpr unsigned int kTile = 440;  // pixels
const Window kBone = Window::ofLevel(400.0, 1800.0);

Tile cutTile(const Volume& volume, Cut cut, double part, const std::string& name, Job& job,
             core::Interpolator& interpolator = core::InterpolationType::CUBIC)
{
    const double edge = volume.longestSide() / kTile;
    const auto index = static_cast<unsigned int>(part * slicesOf(volume, cut));
    Picture picture = viewCut(volume, cut, index, edge, kBone, job, interpolator);
    furnish(picture, volume, directionsOf(cut), edge);
    return {std::move(picture), name + std::to_string(index)};
}

std::unique_ptr<Volume> resizeSkull(const Volume& volume, const OutputFolder& folder)
{
    Job job("skull-resized.png", 5);
    say("Resizing " + volume.name() + ", " + describe(volume) + ".");
    std::unique_ptr<Volume> isotropic = makeIsotropic(volume, job);
    job.hideBar();
    std::array<char, 32> time{};
    std::snprintf(time.data(), time.size(), "%.2f s.", job.seconds());
    say("Resized it to " + describe(*isotropic) + " in " + time.data());
    core::Interpolator& asStored = core::InterpolationType::NEAREST_NEIGHBOR;
    std::vector<Tile> tiles;
    tiles.push_back(cutTile(volume, Cut::CORONAL, 0.5, "as stored: coronal, y = ", job, asStored));
    tiles.push_back(cutTile(*isotropic, Cut::CORONAL, 0.5, "resized: coronal, y = ", job));
    tiles.push_back(
        cutTile(volume, Cut::SAGITTAL, 0.5, "as stored: sagittal, x = ", job, asStored));
    tiles.push_back(cutTile(*isotropic, Cut::SAGITTAL, 0.5, "resized: sagittal, x = ", job));
    folder.write(job,
                 composeSheet("Voxels of equal edges: " + volume.name(),
                              describe(volume) + ", resized to " + describe(*isotropic) +
                                  ", tricubic, the field of view kept; bone window",
                              tiles),
                 "the skull as stored, and resized to voxels of equal edges, bone window");
    return isotropic;
}

void makeCuts(const Volume& volume, const OutputFolder& folder)
{
    Job job("skull-cuts.png", 3);
    std::vector<Tile> tiles;
    tiles.push_back(cutTile(volume, Cut::AXIAL, 0.35, "axial, z = ", job));
    tiles.push_back(cutTile(volume, Cut::CORONAL, 0.5, "coronal, y = ", job));
    tiles.push_back(cutTile(volume, Cut::SAGITTAL, 0.5, "sagittal, x = ", job));
    folder.write(job,
                 composeSheet("Skull, bone window: " + volume.name(),
                              describe(volume) + ", resized from the file's", tiles),
                 "three cuts through the skull, resized to voxels of equal edges, bone window");
}

}  // namespace

void makeSkullPictures(const Volume& volume, const OutputFolder& folder)
{
    const std::unique_ptr<Volume> isotropic = resizeSkull(volume, folder);
    makeCuts(*isotropic, folder);
    Job job("skull-rays.png", kProjections);
    folder.write(job, projectSkull(*isotropic, isotropic->longestSide() / kTile, job),
                 "the skull's surface and its brightest voxels, along rays");
    makeMaxima(*isotropic, folder);
}

}  // namespace reslice
