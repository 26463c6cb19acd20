/// @file
/// Planes: oblique cuts through a volume, in voxels of the source or in units of the world.
///
/// A plane in the world is the Geometry of the image that is to lie there, whatever the source:
/// gridBetween() makes the grid of it for resample(), planesBetween() the planes for reslice().
///
/// The axes of such a plane are at right angles and of length 1: x is called across, y down and z
/// the normal. They are right-handed in the coordinates of the world, so across x down = normal,
/// and the normal points away from whoever looks at the picture. The source may be left-handed,
/// sheared or anisotropic.
///
/// The functions refuse nothing: where an input has no answer, the result has directions of NaN,
/// Geometry::refusal() tells so, and every operation refuses it with ERR_INVALID_ARGUMENT. Vectors
/// may have any length. Every function is safe from any number of threads and, except
/// planesAlong(), is O(1), allocates nothing and throws nothing.
///
/// In the formulas products and sums are rounded one by one, in doubles. unit(v) divides v by a
/// power of two, so that its largest element is at least 1/2 and below 1, and then each element by
/// sqrt(v . v). With the elements of both,
///
///     u . v = (u.x * v.x + u.y * v.y) + u.z * v.z
///     u x v = (u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x)
///     perpendicular(u, v) = unit(u x v), or NaN unless (u x v) . (u x v) > 2^-96
///
/// Two vectors thus count as parallel if rounding alone may be what sets them apart.
#pragma once

#include <vector>

#include "volux/core/Geometry.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Export.h"
#include "volux/resample/Geometry.h"

namespace volux::resample {

/// One oblique plane or a stack of them, in voxels of the source: pixel (i, j) of plane k is at
/// origin + i * across + j * down + k * step.
///
/// `step` leads from each plane that is read to the next. Without a slab these are the planes of
/// the result. With a slab of n planes, `step` joins the planes inside it: plane p of the result
/// combines the planes k = p * n to p * n + n - 1, so the result's planes are n steps apart.
///
///     k        0     1     2     3     4     5      one step from each to the next
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

/// A plane in the world by its centre, its normal and a direction that is to be up in the picture.
///
///     n = unit(normal), across = perpendicular(n, unit(up)), down = n x across
///     origin = (centre - across * (spacing.x * ((width - 1) / 2)))
///                     - down * (spacing.y * ((height - 1) / 2))
///
/// `up` is projected into the plane, so it may lean; parallel to the normal, it has no answer. For
/// more planes along the normal, spacing.z apart, set the result's `depth`.
/// @param spacing along x and y between pixels, along z between planes, in world units
VOLUX_RESAMPLE_API Geometry planeAt(const Position& centre, const Position& normal,
                                    const Position& up, unsigned int width, unsigned int height,
                                    const core::VoxelSize& spacing);

/// The plane in the world through three points: the centre of pixel (0, 0), a point that its row
/// runs to, and one on the side of the next rows. Points on a line have no answer.
///
///     across = unit(along - first), normal = perpendicular(across, unit(below - first)),
///     down = normal x across
/// @param spacing as in planeAt()
VOLUX_RESAMPLE_API Geometry planeThrough(const Position& first, const Position& along,
                                         const Position& below, unsigned int width,
                                         unsigned int height, const core::VoxelSize& spacing);

/// A stack of `count` planes that begins with `plane` and goes on along a direction in the world,
/// at right angles to the planes or not: the third direction is d = unit(direction), spacing.z the
/// distance between the centres of successive planes.
///
/// A direction in the plane has no answer: one with |n . d| at most 2^-48, where n is
/// perpendicular(unit(x), unit(y)) for the columns x and y of plane.direction.
VOLUX_RESAMPLE_API Geometry stackAlong(const Geometry& plane, const Position& direction,
                                       double distance, unsigned int count);

/// A plane for each point of a curve in the world: centred on it, with the tangent for its normal.
///
/// The tangent t is unit(point after - point before); at the ends, where one is missing, the end
/// itself takes its place. The first plane is planeAt() with `up`. From there the picture turns
/// about the curve as little as it can: the smallest rotation that takes a tangent s to the next
/// one, t, also takes the up of its plane, -down, to that of the next, which is planeAt() with it.
/// (R. L. Bishop, There is more than one way to frame a curve, American Mathematical Monthly 82,
/// 1975.)
///
///     m = unit(s + t), next up = up - m * (2 * (m . up))
///
/// From a point without a tangent on, or with one opposite to that before, there is no answer.
/// O(points); allocates the result alone, and throws std::bad_alloc without memory for it.
/// @param spacing as in planeAt()
VOLUX_RESAMPLE_API std::vector<Geometry> planesAlong(const std::vector<Position>& points,
                                                     const Position& up, unsigned int width,
                                                     unsigned int height,
                                                     const core::VoxelSize& spacing);

/// The planes of a source that reslice() makes an image of that lies at `output`. With a slab,
/// each plane of the result is the middle of its slab, whose planes divide the distance to the next
/// slab evenly.
///
/// With the grid gridBetween(output, source): across, down and the origin are its columns,
/// step = column / slab, and the origin moves by -step * ((slab - 1) / 2). The extents and the
/// spacing are those of `output`.
/// @param slab planes in a slab, as Slab::planes; 0 gives planes that every operation refuses
VOLUX_RESAMPLE_API Planes planesBetween(const Geometry& output, const Geometry& source,
                                        unsigned int slab = 1);

}  // namespace volux::resample
