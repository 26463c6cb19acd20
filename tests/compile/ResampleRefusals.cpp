// Calls that volux_resample does not serve; as Refusals.cpp.
#include "volux/resample.h"

using namespace volux::core;
using namespace volux::resample;

namespace {

struct OwnInterpolator : Interpolator {
    Interpolator::interpolator_t<Interpolator, Empty>& get() override;
};

struct OwnBorder : Border {
    Border::border_t<Border, Empty>& get() override;
};

// The last two are not looked at in case 0: that alone is refused.
[[maybe_unused]] void call(const VxImage<short>& image, VxImage<short>* result, const Grid& grid,
                           OwnInterpolator& interpolator, OwnBorder& border,
                           [[maybe_unused]] const VxImage<long>& unserved,
                           [[maybe_unused]] VxImage<long>* unservedResult)
{
    (void)image, (void)result, (void)grid, (void)interpolator, (void)border;
    const Position place = {0, 0, 0};
    int reading = 0;
    VxImage<int> wider;
    (void)place, (void)reading, (void)wider;
#if CASE == 1  // any interpolator by its address
    resample(image, grid, result, interpolator);
#elif CASE == 2   // any border by its address
    resample(image, grid, result, Options(Linear(), border));
#elif CASE == 3   // any interpolator by its address
    const Linear constant;
    resample(image, grid, result, &constant);
#elif CASE == 4   // any border by its address
    resample(image, grid, result, Options(&interpolator, 7));
#elif CASE == 5   // results of the source's element type, float or double
    sample(image, &place, 1, Units::VOXELS, 0, &reading);
#elif CASE == 6   // serves images of unsigned char, short, unsigned short
    volux::resample::resample(unserved, grid, unservedResult);
#elif CASE == 7   // serves images of unsigned char, short, unsigned short
    volux::resample::resample(unserved, grid, ResampleRegion(), unservedResult);
#elif CASE == 8   // serves images of unsigned char, short, unsigned short
    volux::resample::reslice(unserved, Planes(), unservedResult);
#elif CASE == 9   // serves images of unsigned char, short, unsigned short
    volux::resample::resize(unserved, 1, 1, 1, Align::EDGES, unservedResult);
#elif CASE == 10  // serves images of unsigned char, short, unsigned short
    volux::resample::resize(unserved, VoxelSize(1, 1, 1), Align::EDGES, unservedResult);
#elif CASE == 11  // serves images of unsigned char, short, unsigned short
    volux::resample::sample(unserved, &place, 1, Units::VOXELS, 0, &reading);
#elif CASE == 12  // VxImage holds unsigned char, short, unsigned short
    resample(unserved, grid, unservedResult);
#elif CASE == 13  // results of the source's element type, float or double
    volux::resample::resample(image, grid, &wider);
#elif CASE == 14  // results of the source's element type, float or double
    volux::resample::reslice(viewOf(image), Planes(), viewOf(wider));
#elif CASE == 15  // serves images of unsigned char, short, unsigned short
    volux::resample::resample(image, grid, View<long>());
#elif CASE == 16  // does not write through a View of const
    volux::resample::resample(image, grid, viewOf(image));
#elif CASE == 17  // writes to a VxImage or an Image by its address, or to a View
    volux::resample::resample(image, grid, *result);
#elif CASE == 18  // reads a VxImage, an Image or a View
    volux::resample::resample(&image, grid, result);
#elif CASE == 19  // with the types of its arguments, or without any
    volux::resample::resample<int>(image, grid, result);
#elif CASE == 20  // with the types of its arguments, or without any
    volux::resample::resample<short, float>(image, grid, result);
#elif CASE == 21  // ignoring return value of
    volux::resample::resample(image, grid, result);
#elif CASE == 22  // ignoring return value of
    volux::resample::resample(image, grid, ResampleRegion(), result);
#elif CASE == 23  // ignoring return value of
    volux::resample::reslice(image, Planes(), result);
#elif CASE == 24  // ignoring return value of
    volux::resample::resize(image, 1, 1, 1, Align::EDGES, result);
#elif CASE == 25  // ignoring return value of
    volux::resample::resize(image, VoxelSize(1, 1, 1), Align::EDGES, result);
#elif CASE == 26  // ignoring return value of
    sample(image, &place, 1, Units::VOXELS, 0, result->getBufferPointer());
#elif CASE == 27  // ignoring return value of
    sample(image, grid.map, &place, 1, 0, result->getBufferPointer());
#elif CASE == 28  // ignoring return value of
    ResampleRegion().support(grid, nullptr);
#elif CASE == 29  // reads displacement fields of float or double
    resample(image, grid, Warp(image, AffineMap(), AffineMap()), result);
#elif CASE == 30  // reads displacement fields of float or double
    warpBetween(Geometry(), Geometry(), Geometry(), wider);
#elif CASE == 31  // reads a VxImage, an Image or a View
    Warp(&image, AffineMap(), AffineMap());
#elif CASE == 32  // results of the source's element type, float or double
    volux::resample::resample(image, grid, Warp(), &wider);
#elif CASE == 33  // ignoring return value of
    volux::resample::resample(image, grid, Warp(), result);
#elif CASE == 34  // ignoring return value of
    volux::resample::resample(image, grid, Warp(), ResampleRegion(), result);
#elif CASE == 35  // ignoring return value of
    ResampleRegion().support(grid, Warp(), nullptr);
#elif CASE == 36  // reads a VxImage, an Image or a View
    const Sampler sampler(&image);
#elif CASE == 37  // serves images of unsigned char, short, unsigned short
    const Sampler sampler(unserved);
#elif CASE == 38  // ignoring return value of
    Sampler(image).error();
#elif CASE == 39  // serves images of unsigned char, short, unsigned short
    volux::resample::sampleGradient(unserved, &place, 1, Units::VOXELS, 0, nullptr);
#elif CASE == 40  // ignoring return value of
    sampleGradient(image, &place, 1, Units::VOXELS, 0, nullptr);
#elif CASE == 41  // ignoring return value of
    sampleGradient(image, grid.map, &place, 1, 0, nullptr);
#endif
}

}  // namespace
