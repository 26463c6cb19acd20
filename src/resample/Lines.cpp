// Compiled once for each instruction set, as Samples.cpp is.
#include "Blocks.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/Lines.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Elements-inl.h"
#include "Lines-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(linesOfRows);
HWY_EXPORT(elementsOfBlock);

void takeLines(const Lines& lines, LineSink& sink)
{
    HWY_DYNAMIC_DISPATCH(linesOfRows)(lines, sink);
}

void convert(core::DataType type, Overflow overflow, const double* samples, std::size_t count,
             void* elements)
{
    HWY_DYNAMIC_DISPATCH(elementsOfBlock)(type, overflow, samples, count, elements);
}

}  // namespace volux::resample::detail

#endif
