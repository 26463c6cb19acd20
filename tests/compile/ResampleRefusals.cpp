// Calls that the bulk companion does not serve; as Refusals.cpp.
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

[[maybe_unused]] void call(const VxImage<short>& image, VxImage<short>* result, const Grid& grid,
                           OwnInterpolator& interpolator, OwnBorder& border)
{
    (void)image, (void)result, (void)grid, (void)interpolator, (void)border;
#if CASE == 1  // any interpolator by its address
    resample(image, grid, result, interpolator);
#elif CASE == 2  // any border by its address
    resample(image, grid, result, Options(Linear(), border));
#elif CASE == 3  // any interpolator by its address
    const Linear constant;
    resample(image, grid, result, &constant);
#elif CASE == 4  // any border by its address
    resample(image, grid, result, Options(&interpolator, 7));
#endif
}

}  // namespace
