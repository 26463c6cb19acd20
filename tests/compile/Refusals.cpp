// Calls that volux_core does not serve. check_refusals.py compiles each case alone and looks for
// its sentence; case 0 is none of them and must compile.
#include "volux/core.h"

using namespace volux::core;

namespace {

struct OwnInterpolator : Interpolator {
    Interpolator::interpolator_t<Interpolator, Empty>& get() override;
};

struct OwnBorder : Border {
    Border::border_t<Border, Empty>& get() override;
};

[[maybe_unused]] void call(const VxImage<short>& image, OwnInterpolator& interpolator,
                           OwnBorder& border, Interpolator* chosen)
{
    (void)image, (void)interpolator, (void)border, (void)chosen;
#if CASE == 1  // pass any other interpolator by its address
    image.getValueVoxel(0.5, 0.5, 0.5, 0, interpolator);
#elif CASE == 2   // pass any other interpolator by its address
    image.getValueReal(0.5, 0.5, 0.5, 0, interpolator, Constant(), 0);
#elif CASE == 3   // pass any other interpolator by its address
    image.getDoubleValueReal(0.5, 0.5, 0.5, 0, interpolator, &border, 0);
#elif CASE == 4   // pass any other border by its address
    image.getValueVoxel(0.5, 0.5, 0.5, 0, Linear(), border, 0);
#elif CASE == 5   // pass any other border by its address
    image.getValueReal(0.5, 0.5, 0.5, 0, chosen, border, 0);
#elif CASE == 6   // pass any other border by its address
    image.getDoubleValueReal(0.5, 0.5, 0.5, 0, &interpolator, border, 0);
#elif CASE == 7   // pass any other border by its address
    Cubic()(image, 0.5, 0.5, 0.5, 0, border, short{0});
#elif CASE == 8   // pass any other border by its address
    NearestNeighbor().operator()<short, OwnBorder>(image, 0.5, 0.5, 0.5, 0, border, 0);
#elif CASE == 9   // VxImage holds unsigned char, short, unsigned short
    VxImage<long> wrong;
#elif CASE == 10  // VxImage holds unsigned char, short, unsigned short
    VxImage<const short> wrong;
#elif CASE == 11  // takes the address of a policy that is not const
    const Linear constant;
    image.getValueReal(0.5, 0.5, 0.5, 0, &constant);
#elif CASE == 12  // pass any other interpolator by its address
    image.getValueVoxel<Linear>(0.5, 0.5, 0.5, 0, chosen);
#elif CASE == 13  // takes the address of a policy that is not const
    image.getValueVoxel(0.5, 0.5, 0.5, 0, Linear(), "border", 0);
#elif CASE == 14  // takes the address of a policy that is not const
    const Border* constant = &border;
    Linear()(image, 0.5, 0.5, 0.5, 0, constant, short{0});
#endif
}

}  // namespace
