// Labels by single calls. What a voxel outside reads is the border's own affair, which volux_core
// asks: at a whole number its nearest voxel is the one of that index.
#include "volux/resample/Labels.h"

#include "exact/Index.h"
#include "resample/vectors/Vote.h"

namespace volux::resample {

template <class T, class B>
T Labels::operator()(
    const core::VxImage<T>& image, double x, double y, double z, unsigned int c, B border,
    T value) noexcept(core::detail::refuseUnless<true, core::detail::isBorderKind<B>>())
{
    const int column = exact::firstNeighbour<exact::Kernel::LINEAR>(x);
    const int row = exact::firstNeighbour<exact::Kernel::LINEAR>(y);
    const int slice = exact::firstNeighbour<exact::Kernel::LINEAR>(z);
    return static_cast<T>(detail::labelAt<T>(x, y, z, [&](int i, int j, int k) {
        const T label = core::NearestNeighbor()(image, exact::wrappingAdd(column, i),
                                                exact::wrappingAdd(row, j),
                                                exact::wrappingAdd(slice, k), c, border, value);
        return static_cast<double>(label);
    }));
}

core::Interpolator::interpolator_t<core::Interpolator, core::Interpolator::Empty>& Labels::get()
{
    static interpolator_t<Labels, Interpolator> table;
    return table;
}

#define VOLUX_TEMPLATE template
#include "volux/resample/detail/Labels.inc"

}  // namespace volux::resample
