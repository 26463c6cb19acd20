// Compiled once for each instruction set: the file that follows, by Highway's inclusion of this one
// again and again. The last time it adds what chooses between them.
#include "Blocks.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/Blocks.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Elements-inl.h"
#include "Lines-inl.h"
#include "Positions-inl.h"
#include "Samples-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(positionsOfRow);
HWY_EXPORT(samplesOfBlock);
HWY_EXPORT(linesOfRows);
HWY_EXPORT(elementsOfBlock);

void fillPositions(Position row, Position step, unsigned int first, Block& block)
{
    HWY_DYNAMIC_DISPATCH(positionsOfRow)(row, step, first, block);
}

void takeSamples(const Voxels& voxels, Kernel kernel, const Outside& outside, Block& block)
{
    HWY_DYNAMIC_DISPATCH(samplesOfBlock)(voxels, kernel, outside, block);
}

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
