// Highway compiles this file, and what follows in it, once for each instruction set, as it does
// Block.cpp.
#include "Gradient.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/Gradient.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Gradient-inl.h"

#if HWY_ONCE

#include <algorithm>

namespace volux::resample::detail {

HWY_EXPORT(readGradientsHere);

void readGradients(const Channel& channel, Kernel kernel, const Outside& outside,
                   GradientBlock& block)
{
    if (kernel != Kernel::NEAREST) {
        HWY_DYNAMIC_DISPATCH(readGradientsHere)(channel, kernel, outside, block);
        return;
    }
    readBlock(channel, kernel, outside, block);
    for (double* const slopes : {block.slopesX, block.slopesY, block.slopesZ}) {
        std::fill_n(slopes, block.count, 0.0);
    }
}

}  // namespace volux::resample::detail

#endif
