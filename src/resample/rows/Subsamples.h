// The finer grid whose voxels are the sub-samples of the voxels of a grid.
#pragma once

#include <cstdint>

#include "volux/core/Geometry.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Subsamples.h"

namespace volux::resample::detail {

// In one voxel.
inline std::uint64_t countOf(const Subsamples& n)
{
    return std::uint64_t{n.x} * n.y * n.z;
}

// The box of the finer grid that divides a box of the grid.
inline core::Rect finerBox(const core::Rect& box, const Subsamples& n)
{
    return {box.xStart * n.x,           box.xEnd * n.x + (n.x - 1), box.yStart * n.y,
            box.yEnd * n.y + (n.y - 1), box.zStart * n.z,           box.zEnd * n.z + (n.z - 1)};
}

// The grid's own map where voxels are not divided.
AffineMap finerMap(const AffineMap& map, const Subsamples& n);

}  // namespace volux::resample::detail
