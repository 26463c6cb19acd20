/// @file
/// How an output index becomes a position in the source.
#pragma once

#include "volux/resample/Export.h"

namespace volux::resample {

/// A position or a direction. Voxel centres lie at whole numbers.
struct Position {
    double x;  ///< along x
    double y;  ///< along y
    double z;  ///< along z
};

/// An affine map from the indices of output voxels to positions in the source, both in voxels.
///
/// `rows[0]` gives x, `rows[1]` y and `rows[2]` z; the first three columns are the steps of i, j
/// and k, the last one is the position of output voxel (0, 0, 0). A new map is the identity.
struct AffineMap {
    double rows[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};  ///< the 3 x 4 matrix

    /// The position of output voxel (i, j, k), to the last bit the one that every operation of
    /// this library reads. Each coordinate is
    ///
    ///     ((row[3] + row[2] * k) + row[1] * j) + row[0] * i
    ///
    /// in double precision, each product and sum rounded by itself. This function is compiled
    /// inside the library, so no flag of the caller's fuses or reorders them.
    VOLUX_RESAMPLE_API Position operator()(unsigned int i, unsigned int j, unsigned int k) const;

    /// Whether all elements are finite and the three steps span a volume.
    ///
    /// The determinant is taken of the matrix whose rows are scaled by powers of two to a largest
    /// element between 1/2 and 1; zero, as computed in double precision, is singular.
    VOLUX_RESAMPLE_API bool isInvertible() const;
};

}  // namespace volux::resample
