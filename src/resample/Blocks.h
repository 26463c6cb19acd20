// Blocks of samples: the steps from indices to stored elements, each compiled for every
// instruction set and chosen at run time. All instruction sets give the same bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Voxels.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// Samples of a block, and the room that a vector may write behind them.
constexpr std::size_t kBlock = 256;
constexpr std::size_t kRoom = kBlock + 8;

struct Block {
    alignas(64) double x[kRoom];
    alignas(64) double y[kRoom];
    alignas(64) double z[kRoom];
    alignas(64) double samples[kRoom];
    std::size_t count;
};

// The positions row + step * i for the indices from `first` on.
void fillPositions(Position row, Position step, unsigned int first, Block& block);

// Positions whose rows are padded with zeros are filled by the caller; so are these.
void takeSamples(const Voxels& voxels, Kernel kernel, const Outside& outside, Block& block);

// Readings as elements, one after the other. Integers are rounded half away from zero first.
void convert(core::DataType type, Overflow overflow, const double* samples, std::size_t count,
             void* elements);

}  // namespace volux::resample::detail
