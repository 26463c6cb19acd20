/// @file
/// Three small value types: the extents of an image, the spacing of its voxels, a box of voxels.
///
/// They may hold any values; the operations that take them check. Every member is O(1) and never
/// throws. Threads: as for any plain value, an object may be read by several threads while none
/// writes it.
#pragma once

#include "volux/core/Export.h"

namespace volux::core {

/// The four extents of an image, in voxels and channels.
struct VOLUX_CORE_API ImageSize {
    unsigned int width;     ///< voxels along x
    unsigned int height;    ///< voxels along y
    unsigned int depth;     ///< voxels along z
    unsigned int channels;  ///< values per voxel

    /// All four extents 0.
    ImageSize();
    /// The four values as given.
    ImageSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ, unsigned int sizeC);
    /// @{
    /// Member by member.
    ImageSize(const ImageSize&) = default;
    ImageSize(ImageSize&&) = default;
    ImageSize& operator=(const ImageSize& other);
    ImageSize& operator=(ImageSize&& other) noexcept;
    ~ImageSize() = default;
    /// @}

    bool operator==(const ImageSize& other) const;  ///< whether all four are equal
    bool operator!=(const ImageSize& other) const;  ///< whether any of the four differs
};

/// The distance between the centres of neighbouring voxels along each axis, in physical units.
struct VOLUX_CORE_API VoxelSize {
    double x;  ///< physical units per voxel along x
    double y;  ///< physical units per voxel along y
    double z;  ///< physical units per voxel along z

    /// All three 0.0, unlike the spacing of a new image (1.0), so that VxImage::setVoxelSize()
    /// refuses a VoxelSize that nobody has filled in.
    VoxelSize();
    /// The three values as given.
    VoxelSize(double spacingX, double spacingY, double spacingZ);
    /// @{
    /// Member by member.
    VoxelSize(const VoxelSize&) = default;
    VoxelSize(VoxelSize&&) = default;
    VoxelSize& operator=(const VoxelSize& other);
    VoxelSize& operator=(VoxelSize&& other) noexcept;
    ~VoxelSize() = default;
    /// @}

    /// Whether all three are equal, without a tolerance: a NaN spacing differs even from itself.
    bool operator==(const VoxelSize& other) const;
    bool operator!=(const VoxelSize& other) const;  ///< whether any of the three differs
};

/// An axis-aligned box of voxels, as three inclusive ranges of indices.
///
/// A range whose start exceeds its end is empty. There are no equality operators, because the
/// exported set has none.
struct VOLUX_CORE_API Rect {
    unsigned int xStart;  ///< first voxel along x
    unsigned int xEnd;    ///< last voxel along x
    unsigned int yStart;  ///< first voxel along y
    unsigned int yEnd;    ///< last voxel along y
    unsigned int zStart;  ///< first voxel along z
    unsigned int zEnd;    ///< last voxel along z

    /// The single voxel (0, 0, 0).
    Rect();
    /// A box in the plane z = 0.
    Rect(unsigned int firstX, unsigned int lastX, unsigned int firstY, unsigned int lastY);
    /// The six values as given.
    Rect(unsigned int firstX, unsigned int lastX, unsigned int firstY, unsigned int lastY,
         unsigned int firstZ, unsigned int lastZ);
    /// @{
    /// Member by member.
    Rect(const Rect&) = default;
    Rect(Rect&&) = default;
    Rect& operator=(const Rect& other);
    Rect& operator=(Rect&& other) noexcept;
    ~Rect() = default;
    /// @}

    /// Voxels along x: 0 for an empty range, and 0 for the full range of 2^32 voxels, which wraps.
    unsigned int width() const;
    unsigned int height() const;  ///< voxels along y, likewise
    unsigned int depth() const;   ///< voxels along z, likewise
};

}  // namespace volux::core
