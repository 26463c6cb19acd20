// Applies a field of displacements in world units, and follows one landmark through it.
#include <volux/core.h>
#include <volux/resample.h>

#include <iostream>

using namespace volux;

int main()
{
    core::VxImage<short> moving, registered;
    core::VxImage<float> field;  // every vector: 2 mm along x, 1 mm against y
    moving.initialize(40, 40, 20, 1);
    moving(12, 9, 5, 0) = 1000;  // what the registration has found
    field.initialize(10, 10, 10, 3);
    field.fill(0, 2.0F);
    field.fill(1, -1.0F);
    const resample::Geometry space = {40, 40, 20, {1, 1, 2}};
    const resample::Geometry coarse = {10, 10, 10, {4, 4, 4}, {1.5, 1.5, 1}};
    const auto [grid, warp] = resample::warpBetween(space, coarse, space, field);
    if (resample::resample(moving, grid, warp, &registered) != core::SUCCESS)
        return 1;
    const resample::Position from = warp({10, 10, 10});  // millimetres of the fixed image
    std::cout << registered(10, 10, 5, 0) << " from voxel " << from.x << ' ' << from.y << ' '
              << from.z << '\n';  // prints: 1000 from voxel 12 9 5
}
