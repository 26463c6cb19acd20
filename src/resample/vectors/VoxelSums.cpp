// Highway compiles this file once for each instruction set, as it does Block.cpp.
#include "VoxelSums.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/VoxelSums.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "VoxelSums-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(findMeansHere);
HWY_EXPORT(areFiniteHere);
HWY_EXPORT(arePlainHere);

void findMeans(const VoxelBlocks& blocks, double* means)
{
    HWY_DYNAMIC_DISPATCH(findMeansHere)(blocks, means);
}

bool areFinite(const VoxelBlocks& blocks)
{
    return HWY_DYNAMIC_DISPATCH(areFiniteHere)(blocks);
}

bool arePlain(const double* means, std::size_t count)
{
    return HWY_DYNAMIC_DISPATCH(arePlainHere)(means, count);
}

}  // namespace volux::resample::detail

#endif
