/// @file
/// Where an image lies in the world, and the maps between its voxels and the world.
///
/// Geometry is a plain value without invariants: any numbers may be stored, and refusal() tells
/// whether they place an image. Every function is O(1), allocates nothing, throws nothing and is
/// safe from any number of threads while nobody writes the object.
#pragma once

#include "volux/core/Geometry.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Export.h"

namespace volux::resample {

/// An image in the world, as most file formats describe it: voxel (i, j, k) is at
/// origin + direction * (spacing * (i, j, k)).
///
/// Directions may have any length, need not be orthogonal and may be left-handed.
struct Geometry {
    unsigned int width = 0;                              ///< voxels along x
    unsigned int height = 0;                             ///< voxels along y
    unsigned int depth = 0;                              ///< voxels along z
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);  ///< world units per voxel
    Position origin = {0, 0, 0};  ///< centre of voxel (0, 0, 0), in world units
    double direction[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  ///< column n: where axis n points

    /// The map from voxels to the world, to the last bit:
    ///
    ///     rows[r][c] = direction[r][c] * spacing[c]
    ///     rows[r][3] = origin[r]
    ///
    /// It takes whole and fractional indices; voxel (0, 0, 0) is at the origin exactly.
    VOLUX_RESAMPLE_API AffineMap toWorld() const;

    /// The map from the world to voxels, to the last bit:
    ///
    ///     rows[r][c] = inverse[r][c] / spacing[r]
    ///     rows[r][3] = -((rows[r][0] * origin.x + rows[r][1] * origin.y) + rows[r][2] * origin.z)
    ///
    /// `inverse` is that of `direction`. Each row of `direction` and then each column is divided by
    /// the power of two that brings its largest element to at least 1/2 and below 1, which gives m.
    /// Indices count modulo 3, each sum is added from the left, and |t| is the absolute value of
    /// a term:
    ///
    ///     a[r][c] = m[c+1][r+1] * m[c+2][r+2] - m[c+1][r+2] * m[c+2][r+1]
    ///     d = m[0][0] * a[0][0] + m[0][1] * a[1][0] + m[0][2] * a[2][0]
    ///     inverse[r][c] = a[r][c] / d, divided by the powers of row c and column r
    ///
    /// If |d| is at most 2^-48 of what the six products of three elements in d add up to without
    /// their signs, the directions span no volume but for rounding: d counts as 0, and the map is
    /// not finite.
    VOLUX_RESAMPLE_API AffineMap toVoxels() const;

    /// Why these numbers place no image, as a sentence of English, or null if they do. The text
    /// lives as long as the library.
    ///
    /// The spacing must be finite and above 0, the origin finite, the directions finite and span
    /// a volume, and both maps invertible. The extents are not looked at. Maps and grids that are
    /// made of a refused geometry do no harm: they are not finite or not invertible, and every
    /// operation refuses them with ERR_INVALID_ARGUMENT.
    VOLUX_RESAMPLE_API const char* refusal() const;
};

}  // namespace volux::resample
