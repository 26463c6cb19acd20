// A block of samples at any positions. Compiled for every instruction set and chosen at run time;
// all of them give the same bits.
#pragma once

#include <cstddef>

#include "Channel.h"
#include "volux/resample/AffineMap.h"

namespace volux::resample::detail {

// Samples of a block, and the room that a vector may write behind them.
constexpr std::size_t kBlock = 256;
constexpr std::size_t kRoom = kBlock + 8;

struct Block {
    alignas(64) double x[kRoom];
    alignas(64) double y[kRoom];
    alignas(64) double z[kRoom];
    alignas(64) double readings[kRoom];
    std::size_t count;
};

// The positions start + step * i for the indices i from `first` on.
void fillPositions(Position start, Position step, unsigned int first, Block& block);

// Reads a channel at the positions of a block, which zeros pad to whole vectors.
void readBlock(const Channel& channel, Kernel kernel, const Outside& outside, Block& block);

}  // namespace volux::resample::detail
