/// @file
/// Warps: displacement fields between an output and a source, such as registrations compute.
///
/// A field has three channels of float or double, the x, y and z of a vector, and a grid of its
/// own. It leads from the output to the source: the vector at a place of the output tells where in
/// the source the value of that place is read. So the picture moves against the vectors.
///
///     p = grid.map(i, j, k)      the output voxel, in the space of the vectors
///     f = warp.toField(p)        the same place, in voxels of the field
///     q = p + u(f)               each coordinate rounded once
///     s = warp.toVoxels(q)       where the source is read, in its voxels
///
/// The maps are evaluated as AffineMap::operator() does. Vectors count in the units of the space
/// that grid.map leads to: the world, voxels of the source or whatever fits. Further affine maps
/// before and after the field are parts of grid.map and toVoxels, which composed() makes.
///
/// u(f) is what Linear reads, and zero beyond the field of view. Its x, y and z, for a field of n
/// voxels, are
///
///     -0.5 <= f < n - 0.5 on every axis    the bits of volux_core's call with Linear and
///                                          Replication at f in channel 0, 1 or 2
///     anywhere else                        0.0, also where f is not a number
///
/// Sums that overflow and vectors that are not finite give positions that are not finite, which
/// read what such positions always do: out of the field of view of the source.
///
/// Everything here is safe from any number of threads while nobody writes what it reads.
#pragma once

#include <type_traits>

#include "volux/core/ErrorType.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Export.h"
#include "volux/resample/Geometry.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Options.h"
#include "volux/resample/Resample.h"
#include "volux/resample/View.h"
#include "volux/resample/detail/Operands.h"

namespace volux::resample {

namespace detail {

/// The vectors of whatever holds a field.
template <class Field>
View<const void> vectorsOf(const Field& field)
{
    static_assert(isReadable<Field>, "volux::resample reads a VxImage, an Image or a View.");
    using Vectors = decltype(readable(field));
    using Element = std::remove_const_t<typename Vectors::Element>;
    static_assert(std::is_void_v<Element> || std::is_floating_point_v<Element>,
                  "volux::resample reads displacement fields of float or double.");
    return readable(field);
}

}  // namespace detail

/// A displacement field and the affine maps about it; a plain value without invariants, which owns
/// nothing.
///
/// The operations that take one refuse a field without voxels with ERR_NULL_POINTER, and one of
/// another type, of other than three channels or of no size or strides that a source may have, as
/// well as maps that are not invertible, with ERR_INVALID_ARGUMENT.
struct Warp {
    View<const void> field;  ///< the vectors: any strides, float or double
    AffineMap toField;       ///< from the space of the vectors to voxels of the field
    AffineMap toVoxels;      ///< from the space of the vectors to voxels of the source

    /// No field.
    Warp() = default;

    /// Refers to a VxImage, an Image or a View, which must live as long as the warp is used.
    template <class Field>
    Warp(const Field& vectors, const AffineMap& fieldMap, const AffineMap& voxelMap)
        : field(detail::vectorsOf(vectors)), toField(fieldMap), toVoxels(voxelMap)
    {
    }

    /// Where a place in the space of the vectors leads in the source, in voxels, to the last bit:
    /// such as a landmark of the output. Not numbers for a warp that operations refuse. O(1).
    VOLUX_RESAMPLE_API Position operator()(const Position& p) const;
};

/// What the vectors of a field count.
enum class VectorUnits {
    WORLD,          ///< units of the world, along its axes: as ITK, ANTs and elastix write them
    SOURCE_VOXELS,  ///< voxels of the source, along its axes
    FIELD_VOXELS,   ///< voxels of the field, along its axes
};

/// A grid and a warp that belong together.
struct WarpedGrid {
    Grid grid;  ///< of the output
    Warp warp;  ///< from the space that the grid's map leads to
};

namespace detail {

/// The grid and the maps of warpBetween().
VOLUX_RESAMPLE_API WarpedGrid warpedGrid(const Geometry& output, const Geometry& field,
                                         const Geometry& source, VectorUnits units);

}  // namespace detail

/// The grid and the warp for an output, a field and a source that lie in the world.
///
/// - WORLD: grid.map is output.toWorld(), toField field.toVoxels(), toVoxels source.toVoxels().
/// - SOURCE_VOXELS: grid.map is that of gridBetween(output, source), toField that of
///   gridBetween(source, field), toVoxels the identity.
/// - FIELD_VOXELS: grid.map is that of gridBetween(output, field), toField the identity, toVoxels
///   that of gridBetween(field, source).
///
/// Extents and spacing of the grid are the output's. The extents of `field` and `source` are not
/// used: those of the vectors and of the voxels count. Nothing is refused: a geometry that places
/// no image gives maps that every operation refuses. O(1).
template <class Field>
WarpedGrid warpBetween(const Geometry& output, const Geometry& field, const Geometry& source,
                       const Field& vectors, VectorUnits units = VectorUnits::WORLD)
{
    WarpedGrid warped = detail::warpedGrid(output, field, source, units);
    warped.warp.field = detail::vectorsOf(vectors);
    return warped;
}

/// Brings all channels of a volume onto a grid through a displacement field.
///
/// Takes time in proportion to the samples, each of which also reads the field once for all
/// channels. The policies of `options` are those of the source.
/// @return as resample(), with the errors of the warp among those of the source and the grid, in
///         their order; ERR_INVALID_ARGUMENT also for a destination that overlaps the field.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Destination>
[[nodiscard]] core::ErrorType resample(const Source& source, const Grid& grid, const Warp& warp,
                                       const Destination& destination,
                                       const Options& options = Options())
{
    detail::requireServed<T, R, Source, Destination>();
    return detail::fill(detail::readable(source), {grid, Slab(), nullptr, false, &warp},
                        detail::writable(destination), options);
}

/// Brings a box of the source onto a box of the grid through a displacement field, which is given
/// whole.
/// @return as the call above and as resample() with a region.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Destination>
[[nodiscard]] core::ErrorType resample(const Source& brick, const Grid& grid, const Warp& warp,
                                       const ResampleRegion& region, const Destination& destination,
                                       const Options& options = Options())
{
    detail::requireServed<T, R, Source, Destination>();
    return detail::fill(detail::readable(brick), {grid, Slab(), &region, false, &warp},
                        detail::writable(destination), options);
}

}  // namespace volux::resample
