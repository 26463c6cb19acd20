/// @file
/// Antialiasing: a voxel of the result as the mean of several samples inside it.
///
/// Subsamples is a plain value: making one refuses nothing, and the operations check it. It is safe
/// from any number of threads while nobody writes it.
#pragma once

namespace volux::resample {

/// How many sub-samples, along each of its axes, make one voxel of a result.
///
/// Where the steps of a grid are longer than a voxel of the source, one sample for each voxel of
/// the result skips what lies between them, and detail finer than the result can hold appears as
/// patterns that are not there: aliasing. With n x m x l sub-samples, resample(), resize() and
/// reslice() divide each voxel of the result into that many equal boxes, read the middle of each,
/// and store the mean. The box may have any direction; the samples are read by the kernel and the
/// border of the options, each of them at its own position, inside or outside the field of view.
///
/// 1 along all three axes reads the middle of the voxel alone: no antialiasing. 0 along an axis
/// takes as many as the voxel is long in voxels of the source, rounded up:
///
///     n = max(1, ceil(length * (1 - 2^-20)))
///
/// `length` is that of the axis's column of the grid's map, by the formula of spacings in
/// geometryOf(); under a warp that of composed(warp.toVoxels, grid.map), whatever the vectors. A
/// length that exceeds a whole number by a millionth or less counts as that number, because
/// spacings are often kept as floats. A single plane is as thick as its step; {0, 0, 1} takes the
/// mean inside the plane alone.
///
/// The sub-samples are the voxels of a finer grid: sub-sample s of voxel i, along each axis, is its
/// voxel i * n + s. With the columns X, Y, Z and the origin o of the grid's map, the finer map has
///
///     X' = X / n, Y' = Y / m, Z' = Z / l
///     o' = ((o + X' * ((1 - n) / 2)) + Y' * ((1 - m) / 2)) + Z' * ((1 - l) / 2)
///
/// and AffineMap::operator() gives the positions. Where n, m and l are all 1, it is the grid's own
/// map. The sub-samples are added one by one from the first on, x fastest, then y, then z, and the
/// sum is divided by their number, in doubles. A mean that rounding left below the least of them
/// becomes the least, one above the greatest the greatest; so equal sub-samples keep their value.
/// The mean is stored as any reading is. With a slab, each voxel of each plane is such a mean, and
/// then the planes are projected. Labels has no mean: its sub-samples vote.
///
/// resize() with Align::EDGES to an extent that divides the source's reads every voxel exactly once
/// if n is their ratio, and gives the mean of each block.
///
/// The finer grid counts as the grid does: an extent of it, or n x m x l, above 2^31 - 1 is
/// refused with ERR_INVALID_ARGUMENT. sample() refuses all but 1, 1, 1: positions have no size.
/// Time grows with the number of sub-samples, memory does not.
struct Subsamples {
    unsigned int x = 1;  ///< n, along x of the result; 0: as many as the step is long
    unsigned int y = 1;  ///< m, along y
    unsigned int z = 1;  ///< l, along z
};

/// As many sub-samples along each axis as the step is long.
inline constexpr Subsamples kAntialiased = {0, 0, 0};

}  // namespace volux::resample
