/// @file
/// Grids: the voxels of a result, their spacing, and the map that leads into the source.
///
/// The types are plain values without invariants, and the functions refuse nothing: arguments that
/// make no sense give a grid that every operation refuses with ERR_INVALID_ARGUMENT. Every function
/// is O(1), allocates nothing, throws nothing and is safe from any number of threads.
///
/// A grid may be anywhere: positions outside the source read what Options says, and a grid that is
/// wholly outside is served, too, because a part of a larger grid may well be.
#pragma once

#include "volux/core/Geometry.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Export.h"

namespace volux::resample {

/// The voxels of a result, and where each of them reads the source.
struct Grid {
    unsigned int width = 0;   ///< voxels along x, 1 to 2^31 - 1
    unsigned int height = 0;  ///< voxels along y, likewise
    unsigned int depth = 0;   ///< voxels along z, likewise
    /// The result's, in physical units per voxel; finite and above 0.
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);
    AffineMap map;  ///< from voxels of the result to voxels of the source; must be invertible
};

/// An image in the world, as most file formats describe it: voxel (i, j, k) is at
/// origin + direction * (spacing * (i, j, k)).
struct Geometry {
    unsigned int width = 0;                              ///< voxels along x
    unsigned int height = 0;                             ///< voxels along y
    unsigned int depth = 0;                              ///< voxels along z
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);  ///< world units per voxel
    Position origin = {0, 0, 0};  ///< centre of voxel (0, 0, 0), in world units
    double direction[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  ///< column n: where axis n points
};

/// The grid that brings a source at one place in the world to the voxels of another image.
///
/// The map is the inverse of the source's transform, applied to the output's. Directions may have
/// any length and need not be orthogonal; equal directions give steps without rounding. If the
/// source's directions span no volume, but for rounding, the map is not finite and every operation
/// refuses the grid. The extents of the source are not used.
VOLUX_RESAMPLE_API Grid gridBetween(const Geometry& output, const Geometry& source);

/// What a change of size keeps.
///
///     EDGES: the field of view            CENTRES: the first and the last centre
///     |  o  |  o  |  o  |  o  |           |  o  |  o  |  o  |  o  |
///     |     o     |     o     |     |        o        |        o        |
///
/// With EDGES output i reads (i + 1/2) * s - 1/2, and with CENTRES i * s; s is the ratio of the
/// spacings. An extent of 1 reads the middle of the source under both conventions, whether a size
/// or a spacing was asked for.
enum class Align {
    EDGES,    ///< to a size: s = source extent / output extent
    CENTRES,  ///< to a size: s = (source extent - 1) / (output extent - 1)
};

/// The grid of a change to so many voxels. The spacing of the result is the source's times s.
///
/// Where the source or the output has one voxel along an axis, CENTRES keeps the spacing (s = 1)
/// and puts the middle of the output on the middle of the source. Its own formula would divide by
/// 0, or give s = 0: several output voxels in one place, without a spacing. So several voxels made
/// of one are one voxel of the source apart, and all but the middle read outside: an edge that
/// extends, as that of resize() does, copies the voxel to them, and Constant shows around it. EDGES
/// divides the field of view of the one voxel instead.
VOLUX_RESAMPLE_API Grid gridOfSize(const core::ImageSize& source, const core::VoxelSize& spacing,
                                   unsigned int width, unsigned int height, unsigned int depth,
                                   Align align);

/// The grid of a change to another spacing, which the result has exactly; s = output spacing /
/// source spacing.
///
/// EDGES has the whole number of voxels nearest to the field of view, at least one. CENTRES has as
/// many as there are whole steps between the first and the last centre, and one more. Two or more
/// voxels keep the edge before the first voxel, or the first centre; one voxel reads the middle. No
/// position is outside the field of view, or beyond the last centre, but for the rounding of
/// positions; with EDGES the last one may be on the edge, n - 0.5, which counts as outside. An
/// extent that no image can have becomes 0, which every operation refuses.
VOLUX_RESAMPLE_API Grid gridOfSpacing(const core::ImageSize& source, const core::VoxelSize& spacing,
                                      const core::VoxelSize& wanted, Align align);

/// One oblique plane or a stack of them, in voxels of the source: pixel (i, j) of plane k is at
/// origin + i * across + j * down + k * step.
///
/// With a slab of n planes the result's plane p combines the planes k = p * n to p * n + n - 1:
///
///     k        0     1     2     3     4     5      step leads from one to the next
///              |-----|-----|     |-----|-----|
///     result         0                 1            Slab{3}: three steps apart
struct Planes {
    Position origin = {0, 0, 0};  ///< of pixel (0, 0) of the first plane
    Position across = {1, 0, 0};  ///< from a pixel to the next one along x
    Position down = {0, 1, 0};    ///< from a pixel to the next one along y
    Position step = {0, 0, 0};    ///< from a plane k to k + 1, also in a slab; zeros: across x down
    unsigned int width = 0;       ///< pixels along x
    unsigned int height = 0;      ///< pixels along y
    unsigned int count = 1;       ///< planes of the result
    /// The result's, in physical units per voxel. It is not derived from the steps.
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);
};

/// The grid of a stack of planes, whose depth is `count`. Axes that span no volume give a map that
/// every operation refuses.
VOLUX_RESAMPLE_API Grid gridOfPlanes(const Planes& planes);

}  // namespace volux::resample
