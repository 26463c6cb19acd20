// What is made of whole volumes without volux_resample: sample by sample, or nothing.

#include <algorithm>
#include <cmath>
#include <limits>

#include "BulkPictures.h"
#include "EqualEdges.h"

namespace reslice {
namespace {

/// The kernel overshoots at sharp edges, and a conversion to short would wrap.
short saturated(double intensity)
{
    constexpr double lowest = std::numeric_limits<short>::min();
    constexpr double highest = std::numeric_limits<short>::max();
    return static_cast<short>(std::lround(std::clamp(intensity, lowest, highest)));
}

}  // namespace

std::unique_ptr<Volume> makeIsotropic(const Volume& volume, Job& job)
{
    const Layout layout = layoutOfEqualEdges(volume);
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

void makeFlight(const Volume&, const Window&, const OutputFolder&)
{
    say("(without volux_resample there is no flight; scripts/install-packages resample)");
}

void makeWarp(const Volume&, const Window&, const OutputFolder&)
{
    say("(without volux_resample there is no warped slice; scripts/install-packages resample)");
}

void makeMaxima(const Volume&, const OutputFolder&)
{
    say("(without volux_resample there are no maximum projections; scripts/install-packages "
        "resample)");
}

void makeLabelPictures(const Volume&, const OutputFolder&)
{
    say("(without volux_resample no label map is made smaller; scripts/install-packages resample)");
}

}  // namespace reslice
