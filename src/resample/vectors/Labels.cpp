// Highway compiles this file once for each instruction set, as it does Block.cpp.
#include "Labels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/Labels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Labels-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(readLabelBlockHere);
HWY_EXPORT(readLabelLinesHere);

void readLabelBlock(const Channel& channel, const Outside& outside, Block& block)
{
    HWY_DYNAMIC_DISPATCH(readLabelBlockHere)(channel, outside, block);
}

void readLabelLines(const Lines& lines, LineSink& sink)
{
    HWY_DYNAMIC_DISPATCH(readLabelLinesHere)(lines, sink);
}

}  // namespace volux::resample::detail

#endif
