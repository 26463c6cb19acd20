// Samples by Labels, in blocks at any positions and in lines along the axes. Compiled for every
// instruction set and chosen at run time; all of them give the same bits.
#pragma once

#include "Block.h"
#include "Lines.h"

namespace volux::resample::detail {

// As readBlock() and readLines(), with the neighbours and the weights of Linear.
void readLabelBlock(const Channel& channel, const Outside& outside, Block& block);
void readLabelLines(const Lines& lines, LineSink& sink);

}  // namespace volux::resample::detail
