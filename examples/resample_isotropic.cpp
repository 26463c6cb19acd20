// Resamples thick slices to voxels of equal edges, at physical positions.

#include <cmath>
#include <cstdio>

#include "volux/core.h"

using namespace volux::core;

namespace {

/// What the scanner saw: a ramp in each direction, in millimetres from the first voxel.
double scene(double x, double y, double z)
{
    return 100.0 + 3.0 * x - 2.0 * y + 5.0 * z;
}

void acquire(VxImage<float>& image)
{
    const VoxelSize spacing = image.getVoxelSize();
    for (int z = 0; z < static_cast<int>(image.getDepth()); ++z)
        for (int y = 0; y < static_cast<int>(image.getHeight()); ++y)
            for (int x = 0; x < static_cast<int>(image.getWidth()); ++x)
                image(x, y, z, 0) =
                    static_cast<float>(scene(x * spacing.x, y * spacing.y, z * spacing.z));
}

/// `getDoubleValueReal` and not `getValueReal`, which rounds to whole numbers in every type.
void resample(const VxImage<float>& from, double edge, VxImage<float>& to)
{
    for (int z = 0; z < static_cast<int>(to.getDepth()); ++z)
        for (int y = 0; y < static_cast<int>(to.getHeight()); ++y)
            for (int x = 0; x < static_cast<int>(to.getWidth()); ++x)
                to(x, y, z, 0) = static_cast<float>(from.getDoubleValueReal(
                    x * edge, y * edge, z * edge, 0, InterpolationType::LINEAR,
                    InterpolationBorderType::REPLICATION, 0.0F));
}

/// Trilinear interpolation of a ramp gives the ramp, up to the precision of float.
bool agrees(const VxImage<float>& image, double edge)
{
    double largest = 0.0;
    for (int z = 0; z < static_cast<int>(image.getDepth()); ++z)
        for (int y = 0; y < static_cast<int>(image.getHeight()); ++y)
            for (int x = 0; x < static_cast<int>(image.getWidth()); ++x)
                largest = std::fmax(
                    largest, std::fabs(image(x, y, z, 0) - scene(x * edge, y * edge, z * edge)));
    std::printf("largest difference from the scene: %g\n", largest);
    return largest < 1e-4;
}

}  // namespace

int main()
{
    VxImage<float> slices;
    if (slices.initialize(33, 25, 9, 1) != SUCCESS || slices.setVoxelSize(0.5, 0.5, 2.0) != SUCCESS)
        return 1;
    acquire(slices);

    constexpr double edge = 0.4;
    VxImage<float> isotropic;  // reaches as far as the slices: 16, 12 and 16 mm
    if (isotropic.initialize(41, 31, 41, 1) != SUCCESS ||
        isotropic.setVoxelSize(edge, edge, edge) != SUCCESS)
        return 1;
    resample(slices, edge, isotropic);
    return agrees(isotropic, edge) ? 0 : 1;
}
