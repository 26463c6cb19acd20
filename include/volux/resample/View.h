/// @file
/// Views: voxels in anybody's memory, read and written where they are.
#pragma once

#include <cstdint>
#include <type_traits>

#include "volux/core/Geometry.h"

namespace volux::resample {

/// Voxels that somebody else holds: channel c of voxel (x, y, z) is
/// `data[strideX * x + strideY * y + strideZ * z + strideC * c]`.
///
/// T is an element type of VxImage, or a const one for memory that is only read. A view is a plain
/// value without invariants: it owns nothing, and the operations that take one check it. A stride
/// of 0 repeats a source's voxels. Bits depend on the axes as they are named here, never on the
/// strides.
template <class T>
struct View {
    T* data = nullptr;          ///< of voxel (0, 0, 0), wherever in the memory that is
    unsigned int width = 0;     ///< voxels along x
    unsigned int height = 0;    ///< voxels along y
    unsigned int depth = 0;     ///< voxels along z
    unsigned int channels = 1;  ///< elements of a voxel
    std::int64_t strideX = 1;   ///< elements from a voxel to the next along x; may be negative
    std::int64_t strideY = 0;   ///< likewise along y
    std::int64_t strideZ = 0;   ///< likewise along z
    std::int64_t strideC = 1;   ///< from a channel to the next
    /// Physical units per voxel, of a source; that of a result is its grid's, and is not stored.
    core::VoxelSize spacing = core::VoxelSize(1, 1, 1);

    /// No voxels.
    View() = default;

    /// Contiguous voxels, x fastest, whose channels are interleaved.
    View(T* first, unsigned int voxelsX, unsigned int voxelsY, unsigned int voxelsZ,
         unsigned int elements = 1)
        : data(first),
          width(voxelsX),
          height(voxelsY),
          depth(voxelsZ),
          channels(elements),
          strideX(elements),
          strideY(strideX * voxelsX),
          strideZ(strideY * voxelsY)
    {
    }

    /// The same voxels, to be read only.
    template <class Mutable, class = std::enable_if_t<std::is_same_v<const Mutable, T> &&
                                                      !std::is_const_v<Mutable>>>
    View(const View<Mutable>&
             view)  // NOLINT(google-explicit-constructor): it only takes a right away
        : data(view.data),
          width(view.width),
          height(view.height),
          depth(view.depth),
          channels(view.channels),
          strideX(view.strideX),
          strideY(view.strideY),
          strideZ(view.strideZ),
          strideC(view.strideC),
          spacing(view.spacing)
    {
    }
};

}  // namespace volux::resample
