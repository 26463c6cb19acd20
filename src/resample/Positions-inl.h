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

// One loop for all three, which wait for one index instead of three.
inline void positionsOfRow(Position row, Position step, unsigned int first, Block& block)
{
    const hn::ScalableTag<double> d;
    const auto indices = hn::Iota(d, static_cast<double>(first));
    for (std::size_t n = 0; n < block.count; n += hn::Lanes(d)) {
        const auto index = hn::Add(indices, hn::Set(d, static_cast<double>(static_cast<int>(n))));
        const auto coordinate = [&](double start, double slope) {
            return hn::Add(hn::Set(d, start), hn::Mul(hn::Set(d, slope), index));
        };
        hn::Store(coordinate(row.x, step.x), d, block.x + n);
        hn::Store(coordinate(row.y, step.y), d, block.y + n);
        hn::Store(coordinate(row.z, step.z), d, block.z + n);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
