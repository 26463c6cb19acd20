/// @file
/// Orthogonal planes: one axis-aligned slice out of a volume, or back into it.
///
/// A plane is an image of depth 1 with the volume's channels. Indices and extents are in voxels.
/// The axes of a plane run along these axes of the volume:
///
/// | functions                  | index along | plane x is | plane y is | plane (i, j) is volume |
/// |----------------------------|-------------|------------|------------|------------------------|
/// | getXyPlane() setXyPlane()  | z           | x          | y          | (i, j, index)          |
/// | getYzPlane() setYzPlane()  | x           | y          | z          | (index, i, j)          |
/// | getZxPlane() setZxPlane()  | y           | z          | x          | (j, index, i)          |
///
/// No spacing is read or written. Every failure is returned before anything is written.
///
/// Threads: nothing is locked. Other threads may read `src` during a call; no other thread may use
/// `dst`. The two must not be the same image.
#pragma once

#include "volux/core/ErrorType.h"
#include "volux/core/Export.h"
#include "volux/core/VxImage.h"

namespace volux::core {

/// @name Out of a volume
/// Sizes the plane `dst` with VxImage::setImageSize() and copies the slice of the volume `src`.
/// O(voxels of the plane). The result of the sizing is not examined, because callers expect no code
/// for it: after a failed allocation the call succeeds and the plane has no buffer.
/// @return ERR_NULL_POINTER for a null `dst`; then ERR_INVALID_Z, _X or _Y for an index at or
///         beyond the volume's extent along that axis.
/// @throws base::Exception if `dst` wraps the caller's memory.
/// @{
/// The slice z = index.
template <class T>
VOLUX_CORE_API ErrorType getXyPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst);
/// The slice x = index.
template <class T>
VOLUX_CORE_API ErrorType getYzPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst);
/// The slice y = index.
template <class T>
VOLUX_CORE_API ErrorType getZxPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst);
/// @}

/// @name Into a volume
/// Copies the slice z = 0 of the plane `src` into the volume `dst`. The plane's depth is not
/// tested. O(voxels of the plane). Never throws.
/// @return ERR_NULL_POINTER for a null `dst`; then the index as above; then ERR_INVALID_X, _Y or _Z
///         for the axis of the volume that the plane's width does not fit, the same for its height,
///         and ERR_INVALID_CHANNEL for another number of channels.
/// @{
/// The slice z = index.
template <class T>
VOLUX_CORE_API ErrorType setXyPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst);
/// The slice x = index.
template <class T>
VOLUX_CORE_API ErrorType setYzPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst);
/// The slice y = index.
template <class T>
VOLUX_CORE_API ErrorType setZxPlane(unsigned int index, const VxImage<T>& src, VxImage<T>* dst);
/// @}

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/Planes.inc"

}  // namespace volux::core
