/// @file
/// What the calls read and write, without the types, and the sentences with which a compiler
/// refuses the rest.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "volux/core/VxImage.h"
#include "volux/resample/Image.h"
#include "volux/resample/View.h"

namespace volux::resample::detail {

/// The first template parameters of a call that is spelt without them.
struct Deduced;

template <class Named, class T>
inline constexpr bool isAsNamed = std::is_same_v<Named, Deduced> || std::is_same_v<Named, T>;

/// @{
/// The voxels of whatever calls read.
template <class T>
View<const T> readable(const core::VxImage<T>& image)
{
    return viewOf(image);
}
template <class T>
View<const T> readable(const Image<T>& image)
{
    return image.view();
}
template <class T>
View<const T> readable(const View<T>& view)
{
    return view;
}
/// @}

inline core::ImageSize sizeOf(const VoxelLayout& layout)
{
    return {layout.width, layout.height, layout.depth, layout.channels};
}

/// Where a call writes: a core::VxImage, which it may initialise, or a view.
struct Target {
    void* image = nullptr;  ///< a core::VxImage of the view's type, if it is not null
    View<void> view;        ///< of the result, if there is no image
};

template <class R>
struct TargetOf : Target {
    using Element = R;
};

/// @{
/// The place of whatever calls write.
template <class R>
TargetOf<R> writable(core::VxImage<R>* image)
{
    TargetOf<R> target;
    target.image = image;
    target.view = View<R>();
    return target;
}
template <class R>
TargetOf<R> writable(Image<R>* image)
{
    return writable(image == nullptr ? nullptr : image->operator->());
}
template <class R>
TargetOf<R> writable(const View<R>& view)
{
    static_assert(!std::is_const_v<R>, "volux::resample does not write through a View of const.");
    TargetOf<R> target;
    target.view = view;
    return target;
}
inline TargetOf<void> writable(std::nullptr_t)
{
    return {};
}
/// @}

template <class Source, class = void>
inline constexpr bool isReadable = false;
template <class Source>
inline constexpr bool
    isReadable<Source, std::void_t<decltype(readable(std::declval<const Source&>()))>> = true;

template <class Destination, class = void>
inline constexpr bool isWritable = false;
template <class Destination>
inline constexpr bool
    isWritable<Destination, std::void_t<decltype(writable(std::declval<const Destination&>()))>> =
        true;

/// Does not compile for what the library does not serve. What only run-time types tell is refused
/// while the program runs. NamedT and NamedR are the types that the caller has named, if any.
template <class NamedT, class NamedR, class T, class R>
constexpr void requirePair()
{
    static_assert(std::is_void_v<T> || std::is_void_v<R> || std::is_same_v<R, T> ||
                      std::is_same_v<R, float> || std::is_same_v<R, double>,
                  "volux::resample writes results of the source's element type, float or double.");
    static_assert(isAsNamed<NamedT, T> && isAsNamed<NamedR, R>,
                  "volux::resample is called with the types of its arguments, or without any.");
}

template <class NamedT, class NamedR, class Source, class Destination>
constexpr void requireServed()
{
    static_assert(isReadable<Source>, "volux::resample reads a VxImage, an Image or a View.");
    static_assert(isWritable<Destination>,
                  "volux::resample writes to a VxImage or an Image by its address, or to a View.");
    if constexpr (isReadable<Source> && isWritable<Destination>) {
        using From = decltype(readable(std::declval<const Source&>()));
        using To = decltype(writable(std::declval<const Destination&>()));
        requirePair<NamedT, NamedR, std::remove_const_t<typename From::Element>,
                    typename To::Element>();
    }
}

}  // namespace volux::resample::detail
