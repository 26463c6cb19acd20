/// @file
/// How the index of an output voxel becomes a position in the source.
///
/// Both types are plain values without invariants: any numbers may be stored, and the operations
/// that take a map check it. Every operation is O(1), allocates nothing, throws nothing and is safe
/// from any number of threads while nobody writes the object.
#pragma once

#include "volux/resample/Export.h"

namespace volux::resample {

/// A position or a direction, in voxels of the source unless stated otherwise. Voxel centres are at
/// whole numbers.
struct Position {
    double x;  ///< along x
    double y;  ///< along y
    double z;  ///< along z
};

/// An affine map: from the indices of output voxels to positions in the source, both in voxels, if
/// it is a grid's; between voxels and the world, if it is a geometry's.
///
/// `rows[0]` gives x, `rows[1]` y and `rows[2]` z. The first three columns are the steps of i, j
/// and k; the last column is the position of output voxel (0, 0, 0). A new map is the identity.
struct AffineMap {
    double rows[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};  ///< the 3 x 4 matrix

    /// The position of output voxel (i, j, k): to the last bit the one that every operation of
    /// volux_resample reads. Each coordinate is
    ///
    ///     ((row[3] + row[2] * k) + row[1] * j) + row[0] * i
    ///
    /// in double precision, each product and sum rounded by itself. The function is compiled inside
    /// the library, so no flag of the caller's fuses or reorders them. Any map is taken; one with
    /// infinite or NaN elements gives such positions.
    VOLUX_RESAMPLE_API Position operator()(unsigned int i, unsigned int j, unsigned int k) const;

    /// The same for a fractional index, with i = index.x, j = index.y and k = index.z; at whole
    /// numbers it has the same bits.
    VOLUX_RESAMPLE_API Position operator()(const Position& index) const;

    /// Whether all elements are finite and the three steps span a volume. Every operation that
    /// takes a grid refuses other maps.
    ///
    /// The determinant is computed in double precision, after each row and then each column of the
    /// steps has been divided by a power of two to a largest element between 1/2 and 1. A map whose
    /// determinant comes out as zero is singular, however large or small its steps are.
    VOLUX_RESAMPLE_API bool isInvertible() const;
};

/// The map that takes a position through `inner` and then through `outer`, to the last bit:
///
///     rows[r][c] = (outer[r][0] * inner[0][c] + outer[r][1] * inner[1][c])
///                                             + outer[r][2] * inner[2][c]    for c below 3
///
/// The last column is outer(inner(0, 0, 0)). Any maps are taken.
VOLUX_RESAMPLE_API AffineMap composed(const AffineMap& outer, const AffineMap& inner);

}  // namespace volux::resample
