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
    float reading = 0;
    (void)place, (void)reading;
#if CASE == 1  // any interpolator by its address
    resample(image, grid, result, interpolator);
#elif CASE == 2   // any border by its address
    resample(image, grid, result, Options(Linear(), border));
#elif CASE == 3   // any interpolator by its address
    const Linear constant;
    resample(image, grid, result, &constant);
#elif CASE == 4   // any border by its address
    resample(image, grid, result, Options(&interpolator, 7));
#elif CASE == 5   // results of the image's element type or double
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
#endif
}

}  // namespace
