// Reads along a line that enters and leaves an image: three kernels, each with both borders.

#include <cstdio>

#include "volux/core.h"

using namespace volux::core;

namespace {

constexpr short kOutside = -50;  // what the constant border reads

/// One column of the table, at x on the line y = z = 0.
struct Profile {
    const VxImage<short>& image;
    Interpolator* kernel;
    Border* border;

    double operator()(double x) const
    {
        return image.getDoubleValueReal(x, 0.0, 0.0, 0, kernel, border, kOutside);
    }
};

/// A kernel reproduces the voxels, and beyond its reach each border gives its own answer.
bool holds(const Profile& profile)
{
    const bool constant = profile.border == &InterpolationBorderType::CONSTANT;
    bool right =
        profile(-9.0) == (constant ? kOutside : 0) && profile(15.0) == (constant ? kOutside : 100);
    for (int x = 0; x < 6; ++x)
        right = right && profile(x) == profile.image.getValueVoxel(x, 0, 0);
    return right;
}

}  // namespace

int main()
{
    short step[6] = {0, 0, 100, 100, 100, 100};
    VxImage<short> image;
    if (image.initializeWithPointer(step, 6, 1, 1, 1) != SUCCESS)
        return 1;

    Profile columns[6] = {
        {image, &InterpolationType::NEAREST_NEIGHBOR, &InterpolationBorderType::CONSTANT},
        {image, &InterpolationType::LINEAR, &InterpolationBorderType::CONSTANT},
        {image, &InterpolationType::CUBIC, &InterpolationBorderType::CONSTANT},
        {image, &InterpolationType::NEAREST_NEIGHBOR, &InterpolationBorderType::REPLICATION},
        {image, &InterpolationType::LINEAR, &InterpolationBorderType::REPLICATION},
        {image, &InterpolationType::CUBIC, &InterpolationBorderType::REPLICATION}};

    std::puts("       |  constant border, -50      |  replicated border");
    std::puts("     x |  nearest   linear    cubic |  nearest   linear    cubic");
    for (double x = -2.0; x <= 7.0; x += 0.25) {
        std::printf("%6.2f |", x);
        for (int i = 0; i < 6; ++i)
            std::printf("%9.3f%s", columns[i](x), i == 2 ? " |" : i == 5 ? "\n" : "");
    }

    bool right = columns[4](1.5) == 50.0 && columns[5](2.25) == 107.03125;  // the cubic overshoots
    for (const Profile& column : columns)
        right = right && holds(column);
    return right ? 0 : 1;
}
