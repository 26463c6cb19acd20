// Sums of blocks of voxels. Compiled for every instruction set and chosen at run time; all of them
// give the same bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "volux/core/DataType.h"

namespace volux::resample::detail {

// Voxels that are blocks side by side along x, of width x height x depth voxels each. Strides are
// in bytes, of either sign.
struct VoxelBlocks {
    core::DataType type;
    const unsigned char* first;
    std::int64_t strideX;
    std::int64_t strideY;
    std::int64_t strideZ;
    std::size_t width;  // at most kMostAlong
    std::size_t height;
    std::size_t depth;
    std::size_t count;  // at most kBlock, where means are found
};

// Up to here, and to so many rows and voxels of a block, the sums of integers are exact.
constexpr std::size_t kMostAlong = 256;
constexpr std::size_t kMostRows = 1U << 15U;
constexpr std::size_t kMostVoxels = 1U << 21U;

// The mean of each block: the sum of its voxels, added one by one from the first on, x fastest,
// then y, then z, divided by their number, and no less than the least nor more than the greatest.
void findMeans(const VoxelBlocks& blocks, double* means);

// Whether all voxels of the blocks are finite.
bool areFinite(const VoxelBlocks& blocks);

// Whether no mean is infinite, NaN or -0.0.
bool arePlain(const double* means, std::size_t count);

}  // namespace volux::resample::detail
