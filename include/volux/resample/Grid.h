/// @file
/// Where the voxels of a result lie: its size, its spacing, and the map into the source.
#pragma once

#include "volux/core/Geometry.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Export.h"

namespace volux::resample {

/// The voxels of a result and where each of them reads the source.
struct Grid {
    unsigned int width = 0;                              ///< voxels along x
    unsigned int height = 0;                             ///< voxels along y
    unsigned int depth = 0;                              ///< voxels along z
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);  ///< becomes the result's
    AffineMap map;                                       ///< from its voxels to the source's
};

/// An image in the world, as most file formats describe it: voxel (i, j, k) lies at
/// origin + direction * (spacing * (i, j, k)).
struct Geometry {
    unsigned int width = 0;                              ///< voxels along x
    unsigned int height = 0;                             ///< voxels along y
    unsigned int depth = 0;                              ///< voxels along z
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);  ///< world units per voxel
    Position origin = {0, 0, 0};                         ///< of the centre of voxel (0, 0, 0)
    double direction[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  ///< column n: where axis n points
};

/// The grid that brings a source at one place in the world to the voxels of another.
///
/// The map is the inverse of the source's transform after the output's; a source transform that has
/// none, but for rounding, gives a map that is not finite, which every operation refuses.
VOLUX_RESAMPLE_API Grid gridBetween(const Geometry& output, const Geometry& source);

/// What a change of size keeps.
///
///     EDGES: the field of view            CENTRES: the first and the last centre
///     |  o  |  o  |  o  |  o  |           |  o  |  o  |  o  |  o  |
///     |     o     |     o     |              |        o        |        o  (both ends meet)
///
/// With EDGES output i reads (i + 1/2) * s - 1/2, and with CENTRES i * s, s being the ratio of the
/// spacings.
enum class Align {
    EDGES,    ///< s = source extent / output extent
    CENTRES,  ///< s = (source extent - 1) / (output extent - 1)
};

/// The grid of a change to so many voxels. An extent of 1 reads the middle under both conventions.
VOLUX_RESAMPLE_API Grid gridOfSize(const core::ImageSize& source, const core::VoxelSize& spacing,
                                   unsigned int width, unsigned int height, unsigned int depth,
                                   Align align);

/// The grid of a change to another spacing, which the result has exactly.
///
/// EDGES keeps the edge before the first voxel, and has the whole number of voxels nearest to the
/// field of view, at least one. CENTRES keeps the first centre, and has no centre beyond the last,
/// but for the rounding of positions.
VOLUX_RESAMPLE_API Grid gridOfSpacing(const core::ImageSize& source, const core::VoxelSize& spacing,
                                      const core::VoxelSize& wanted, Align align);

/// One oblique plane or a stack of them, in voxels of the source: pixel (i, j) of plane k lies at
/// origin + i * across + j * down + k * step.
struct Planes {
    Position origin = {0, 0, 0};  ///< of pixel (0, 0) of the first plane
    Position across = {1, 0, 0};  ///< from a pixel to the next one along x
    Position down = {0, 1, 0};    ///< from a pixel to the next one along y
    Position step = {0, 0, 0};    ///< from a plane to the next one; zeros: across x down
    unsigned int width = 0;       ///< pixels along x
    unsigned int height = 0;      ///< pixels along y
    unsigned int count = 1;       ///< planes
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);  ///< becomes the result's
};

/// The grid of a stack of planes.
VOLUX_RESAMPLE_API Grid gridOfPlanes(const Planes& planes);

}  // namespace volux::resample
