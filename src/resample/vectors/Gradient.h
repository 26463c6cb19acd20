// A block of samples and of their derivatives at any positions. Compiled for every instruction set
// and chosen at run time; all of them give the same bits.
#pragma once

#include "Block.h"

namespace volux::resample::detail {

// The derivatives beside the readings, in voxels.
struct GradientBlock : Block {
    alignas(64) double slopesX[kRoom];
    alignas(64) double slopesY[kRoom];
    alignas(64) double slopesZ[kRoom];
};

// Reads a channel and its derivatives at the positions of a block, which zeros pad to whole
// vectors.
void readGradients(const Channel& channel, Kernel kernel, const Outside& outside,
                   GradientBlock& block);

}  // namespace volux::resample::detail
