// The most frequent labels of blocks of voxels.
#pragma once

#include "resample/vectors/VoxelSums.h"

namespace volux::resample::detail {

// The vote of the voxels of each block, as Votes has it; `nearest` has the address of the
// voxel nearest to each block's centre.
void findModes(const VoxelBlocks& blocks, const unsigned char* const* nearest, double* modes);

}  // namespace volux::resample::detail
