/// @file
/// Three small value types: the extents of an image, the spacing of its voxels, a box of voxels.
///
/// They hold no invariants: any values may be stored, and the operations that take them check.
/// Every operation is O(1) and, as for any plain value, safe on objects that no other thread
/// writes.
#pragma once

#include "volux/core/Export.h"

namespace volux::core {

/// The four extents of an image.
struct VOLUX_CORE_API ImageSize {
    unsigned int width;     ///< voxels along x
    unsigned int height;    ///< voxels along y
    unsigned int depth;     ///< voxels along z
    unsigned int channels;  ///< values per voxel

    /// All four extents 0.
    ImageSize();
    /// The four values as given.
    ImageSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ, unsigned int sizeC);
    ImageSize(const ImageSize&) = default;             ///< member by member
    ImageSize(ImageSize&&) = default;                  ///< the same
    ImageSize& operator=(const ImageSize& other);      ///< member by member
    ImageSize& operator=(ImageSize&& other) noexcept;  ///< the same
    ~ImageSize() = default;

    bool operator==(const ImageSize& other) const;  ///< all four are equal
    bool operator!=(const ImageSize& other) const;  ///< any of the four differs
};

/// The physical distance between neighbouring voxels, per axis.
struct VOLUX_CORE_API VoxelSize {
    double x;  ///< spacing along x, in physical units per voxel
    double y;  ///< spacing along y
    double z;  ///< spacing along z

    /// All three 0.0, on purpose unlike the spacing of a new image (1.0): VxImage::setVoxelSize
    /// refuses a VoxelSize that nobody filled in.
    VoxelSize();
    /// The three values as given.
    VoxelSize(double spacingX, double spacingY, double spacingZ);
    VoxelSize(const VoxelSize&) = default;             ///< member by member
    VoxelSize(VoxelSize&&) = default;                  ///< the same
    VoxelSize& operator=(const VoxelSize& other);      ///< member by member
    VoxelSize& operator=(VoxelSize&& other) noexcept;  ///< the same
    ~VoxelSize() = default;

    /// Exact comparison, no tolerance: a NaN spacing differs even from itself.
    bool operator==(const VoxelSize& other) const;
    bool operator!=(const VoxelSize& other) const;  ///< any of the three differs
};

/// An axis-aligned box of voxels; each pair is an inclusive range of indices.
///
/// A range whose start exceeds its end is empty. There are deliberately no equality operators.
struct VOLUX_CORE_API Rect {
    unsigned int xStart;  ///< first x
    unsigned int xEnd;    ///< last x
    unsigned int yStart;  ///< first y
    unsigned int yEnd;    ///< last y
    unsigned int zStart;  ///< first z
    unsigned int zEnd;    ///< last z

    /// The single voxel (0, 0, 0).
    Rect();
    /// A box in the plane z = 0.
    Rect(unsigned int firstX, unsigned int lastX, unsigned int firstY, unsigned int lastY);
    /// The six values as given.
    Rect(unsigned int firstX, unsigned int lastX, unsigned int firstY, unsigned int lastY,
         unsigned int firstZ, unsigned int lastZ);
    Rect(const Rect&) = default;             ///< member by member
    Rect(Rect&&) = default;                  ///< the same
    Rect& operator=(const Rect& other);      ///< member by member
    Rect& operator=(Rect&& other) noexcept;  ///< the same
    ~Rect() = default;

    /// Voxels along x: 0 for an empty range. The full range of 2^32 voxels wraps to 0.
    unsigned int width() const;
    unsigned int height() const;  ///< voxels along y, likewise
    unsigned int depth() const;   ///< voxels along z, likewise
};

}  // namespace volux::core
