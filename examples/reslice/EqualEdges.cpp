#include "EqualEdges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "Failure.h"
#include "ShortNumber.h"
#include "View.h"

namespace reslice {
namespace {

/// Unequal edges multiply the voxels, and a ray takes a step for each one along its way.
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

}  // namespace

Layout layoutOfEqualEdges(const Volume& volume)
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

}  // namespace reslice
