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
#include "volux/resample/Geometry.h"
#include "volux/resample/Planes.h"

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

/// A grid, and where its result lies in the world: voxel (i, j, k) of `geometry` is where
/// `grid.map(i, j, k)` reads the source, but for rounding.
struct PlacedGrid {
    Grid grid;          ///< for resample()
    Geometry geometry;  ///< of the result
};

/// Where the result of any grid lies, if its source lies at `source`.
///
/// With W = source.toWorld() and the grid's map M, the origin is W(M(0, 0, 0)), and step c has the
/// elements (W[r][0] * M[0][c] + W[r][1] * M[1][c]) + W[r][2] * M[2][c]. Its direction is
/// unit(step), as Planes.h defines it, and its spacing the square root in there, multiplied by the
/// power of two again. The spacing of the grid is not used.
VOLUX_RESAMPLE_API Geometry geometryOf(const Geometry& source, const Grid& grid);

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

/// The grid of a change to so many voxels of a source in the world, and where the result lies.
///
/// The first voxel of the result is not where the first one of the source is: with EDGES its centre
/// moves by half the difference of the spacings, because the edge stays. The origin is
/// source.toWorld()(grid.map(0, 0, 0)), the spacing the grid's, and the direction the source's.
VOLUX_RESAMPLE_API PlacedGrid gridOfSize(const Geometry& source, unsigned int width,
                                         unsigned int height, unsigned int depth, Align align);

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

/// The grid of a change to another spacing of a source in the world, and where the result lies, by
/// the formulas of gridOfSize().
VOLUX_RESAMPLE_API PlacedGrid gridOfSpacing(const Geometry& source, const core::VoxelSize& wanted,
                                            Align align);

/// The voxels of a box of the source as they are, and where the box lies: the origin is
/// source.toWorld()(xStart, yStart, zStart), and spacing and direction are the source's. A box that
/// exceeds the source reads what the border gives; an empty one has an extent of 0, which every
/// operation refuses.
VOLUX_RESAMPLE_API PlacedGrid gridOfCrop(const Geometry& source, const core::Rect& box);

/// The grid of a stack of planes, whose depth is `count`. Axes that span no volume give a map that
/// every operation refuses.
VOLUX_RESAMPLE_API Grid gridOfPlanes(const Planes& planes);

/// The grid of a stack of planes through a source in the world, and where the result lies, by
/// geometryOf(). The grid has the spacing of that; `planes.spacing` is not used.
///
/// With a slab of n planes the result lies in the middle of each slab, and the grid reads there:
/// its origin is planes.origin + step * ((n - 1) / 2), its third step is step * n. To make the
/// slabs themselves, pass the planes to reslice(), with the spacing of this grid and Slab{n}.
VOLUX_RESAMPLE_API PlacedGrid gridOfPlanes(const Geometry& source, const Planes& planes,
                                           unsigned int slab = 1);

}  // namespace volux::resample
