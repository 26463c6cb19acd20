// Highway compiles this file, and what follows in it, once for each instruction set. The last time
// it adds what chooses between them.
#include "Block.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/Block.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Block-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(fillPositionsHere);
HWY_EXPORT(readBlockHere);

void fillPositions(Position start, Position step, unsigned int first, Block& block)
{
    HWY_DYNAMIC_DISPATCH(fillPositionsHere)(start, step, first, block);
}

void readBlock(const Channel& channel, Kernel kernel, const Outside& outside, Block& block)
{
    HWY_DYNAMIC_DISPATCH(readBlockHere)(channel, kernel, outside, block);
}

}  // namespace volux::resample::detail

#endif
