// The most frequent labels of blocks of voxels.
#pragma once

#include "resample/vectors/VoxelSums.h"

namespace volux::resample::detail {

// The vote of the voxels of each block, as Votes has it; `nearest` has the label of the voxel
// nearest to each block's centre.
void findModes(const VoxelBlocks& blocks, const double* nearest, double* modes);

}  // namespace volux::resample::detail
