// The positions of a block, mapped and moved. Compiled for every instruction set and chosen at run
// time; all of them give the same bits.
#pragma once

#include "Block.h"

namespace volux::resample::detail {

// What an image's field of view is measured in: its voxels along each axis.
struct Extents {
    unsigned int x;
    unsigned int y;
    unsigned int z;
};

// Where a map leads from each position of a block. Both blocks may be one.
void mapPositions(const AffineMap& map, const Block& from, Block& to);

// Adds a block's readings to as many coordinates, and 0.0 where its positions are out of view.
void addInView(const Block& block, const Extents& extents, double* coordinates);

// Whether all positions of a block are in view, but for those that only pad it.
bool areInView(const Block& block, const Extents& extents);

}  // namespace volux::resample::detail
