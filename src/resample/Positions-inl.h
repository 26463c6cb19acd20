// The positions of a row, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_POSITIONS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_POSITIONS
#undef VOLUX_RESAMPLE_POSITIONS
#else
#define VOLUX_RESAMPLE_POSITIONS
#endif

#include <hwy/highway.h>

#include "Blocks.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

inline void coordinatesOfRow(double row, double step, unsigned int first, std::size_t count,
                             double* coordinates)
{
    const hn::ScalableTag<double> d;
    const auto start = hn::Set(d, row);
    const auto slope = hn::Set(d, step);
    const auto lanes = hn::Set(d, static_cast<double>(hn::Lanes(d)));
    auto index = hn::Iota(d, static_cast<double>(first));
    for (std::size_t n = 0; n < count; n += hn::Lanes(d)) {
        hn::Store(hn::Add(start, hn::Mul(slope, index)), d, coordinates + n);
        index = hn::Add(index, lanes);
    }
}

inline void positionsOfRow(Position row, Position step, unsigned int first, Block& block)
{
    coordinatesOfRow(row.x, step.x, first, block.count, block.x);
    coordinatesOfRow(row.y, step.y, first, block.count, block.y);
    coordinatesOfRow(row.z, step.z, first, block.count, block.z);
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
