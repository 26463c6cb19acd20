// Highway compiles this file once for each instruction set, as it does Block.cpp.
#include "Lines.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/Lines.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Lines-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(readLinesHere);

void readLines(const Lines& lines, LineSink& sink)
{
    HWY_DYNAMIC_DISPATCH(readLinesHere)(lines, sink);
}

}  // namespace volux::resample::detail

#endif
