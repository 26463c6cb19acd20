/// @file
/// Views: voxels in anybody's memory, read and written where they are.
///
/// Views are plain values without invariants: they own nothing, making one refuses nothing, and the
/// operations that take one check it. Everything here is O(1), allocates nothing, throws nothing
/// and is safe from any number of threads while nobody writes the object.
#pragma once

#include <cstdint>
#include <type_traits>

#include "volux/core/DataType.h"
#include "volux/core/Geometry.h"
#include "volux/core/VxImage.h"
#include "volux/resample/Export.h"

namespace volux::resample {

/// How many voxels there are, and how far apart in memory.
struct VoxelLayout {
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
};

namespace detail {

/// What the elements of a view are: a constant of its type.
template <class T>
struct ElementTag {
    static_assert(core::detail::isElementType<std::remove_const_t<T>>,
                  "volux::resample serves images of unsigned char, short, unsigned short, int, "
                  "unsigned int, float or double.");
    // NOLINTNEXTLINE(readability-identifier-naming): as the tag that is known at run time
    static constexpr core::DataType type = core::detail::tagOf<std::remove_const_t<T>>();

    ElementTag() = default;
    explicit ElementTag(core::DataType) {}
};

/// Known only while the program runs.
struct RunTimeTag {
    core::DataType type = {};  ///< what the elements are; a new one is refused

    RunTimeTag() = default;
    explicit RunTimeTag(core::DataType tag) : type(tag) {}
};
template <>
struct ElementTag<void> : RunTimeTag {
    using RunTimeTag::RunTimeTag;
};
template <>
struct ElementTag<const void> : RunTimeTag {
    using RunTimeTag::RunTimeTag;
};

}  // namespace detail

/// Voxels that somebody else holds: channel c of voxel (x, y, z) is
/// `data[strideX * x + strideY * y + strideZ * z + strideC * c]`.
///
/// T is an element type of VxImage, or a const one for memory that is only read. With void and
/// const void the type is known only while the program runs, as to a binding of another language:
/// the member `type` says what `data` points to, and operations refuse what they do not serve with
/// ERR_INVALID_ARGUMENT instead of a sentence of the compiler's.
///
/// A stride of 0 repeats a source's voxels. Bits depend on the axes as they are named here, never
/// on the strides.
template <class T>
struct View : detail::ElementTag<T>, VoxelLayout {
    using Element = T;  ///< of the voxels, const or not

    T* data = nullptr;  ///< of voxel (0, 0, 0), wherever in the memory that is

    /// No voxels.
    View() = default;

    /// Voxels of any layout.
    View(T* first, const VoxelLayout& layout) : VoxelLayout(layout), data(first) {}

    /// Contiguous voxels, x fastest, whose channels are interleaved.
    View(T* first, unsigned int voxelsX, unsigned int voxelsY, unsigned int voxelsZ,
         unsigned int elements = 1)
        : data(first)
    {
        width = voxelsX;
        height = voxelsY;
        depth = voxelsZ;
        channels = elements;
        strideX = elements;
        strideY = strideX * voxelsX;
        strideZ = strideY * voxelsY;
    }

    /// The same voxels, to be read only or of a type that is known only while the program runs.
    template <class Other, class = std::enable_if_t<std::is_convertible_v<Other*, T*>>>
    View(const View<Other>& view)  // NOLINT(google-explicit-constructor): nothing is lost
        : detail::ElementTag<T>(view.type), VoxelLayout(view), data(view.data)
    {
    }
};

namespace detail {

/// The view of a core::VxImage of this element type. VxImage itself shows its strides to nobody.
VOLUX_RESAMPLE_API View<void> viewOfImage(const void* image, core::DataType type);

}  // namespace detail

/// @{
/// The voxels of an image where they are, and its spacing. An image without a buffer gives a view
/// without `data`. The view is as good as the image's buffer: neither resizing nor destroying the
/// image changes it.
template <class T>
View<T> viewOf(core::VxImage<T>& image)
{
    const View<void> view = detail::viewOfImage(&image, View<T>::type);
    return {static_cast<T*>(view.data), view};
}
template <class T>
View<const T> viewOf(const core::VxImage<T>& image)
{
    const View<void> view = detail::viewOfImage(&image, View<T>::type);
    return {static_cast<const T*>(view.data), view};
}
/// @}

}  // namespace volux::resample
