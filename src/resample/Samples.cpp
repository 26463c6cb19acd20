// Compiled once for each instruction set: the files that follow, by Highway's inclusion of this one
// again and again. The last time it adds what chooses between them.
#include "Blocks.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/Samples.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Positions-inl.h"
#include "Samples-inl.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

void samplesOfBlock(const Voxels& voxels, Kernel kernel, const Outside& outside, Block& block)
{
    switch (voxels.type) {
        case core::DT_UCHAR:
            return samplesOf<unsigned char>(voxels, kernel, outside, block);
        case core::DT_SHORT:
            return samplesOf<short>(voxels, kernel, outside, block);
        case core::DT_USHORT:
            return samplesOf<unsigned short>(voxels, kernel, outside, block);
        case core::DT_INT:
            return samplesOf<int>(voxels, kernel, outside, block);
        case core::DT_UINT:
            return samplesOf<unsigned int>(voxels, kernel, outside, block);
        case core::DT_FLOAT:
            return samplesOf<float>(voxels, kernel, outside, block);
        case core::DT_DOUBLE:
            return samplesOf<double>(voxels, kernel, outside, block);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(positionsOfRow);
HWY_EXPORT(samplesOfBlock);

void fillPositions(Position row, Position step, unsigned int first, Block& block)
{
    HWY_DYNAMIC_DISPATCH(positionsOfRow)(row, step, first, block);
}

void takeSamples(const Voxels& voxels, Kernel kernel, const Outside& outside, Block& block)
{
    HWY_DYNAMIC_DISPATCH(samplesOfBlock)(voxels, kernel, outside, block);
}

}  // namespace volux::resample::detail

#endif
