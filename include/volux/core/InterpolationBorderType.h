/// @file
/// Border policies: what a sampling kernel reads for a voxel outside the image.
///
/// There are two. Constant reads a value that travels with each call; Replication reads the nearest
/// edge voxel. A kernel takes its border by value, chosen at compile time, or as a Border*, chosen
/// at run time; the results have the same bits.
///
/// Positions and extents are in voxels. Policies hold no state. Every operation is O(1), allocates
/// nothing and is thread-safe while nobody modifies the image.
#pragma once

#include "volux/core/Export.h"
#include "volux/core/detail/Served.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::core {

template <class T>
class VxImage;

namespace detail {

struct RunTime;

// Clamps below first and above second: the order makes an extent of 0 give -1.
inline int clamped(int index, unsigned int extent)
{
    const int lowest = index < 0 ? 0 : index;
    const int last = static_cast<int>(extent - 1U);
    return last < lowest ? last : lowest;
}

}  // namespace detail

/// Base of the border policies, for borders chosen at run time.
///
/// A border of your own derives from Border and overrides get() to return a table. The table is an
/// object of border_t<YourBorder, Border>, if YourBorder has a member template fetch() like those
/// of Constant and Replication, or of your own class derived from border_t<Border, Border::Empty>.
///
/// Such a border is passed by its address. The object must be alive during the call; the address
/// may be null if nothing outside the image is read. A kernel calls get() and then fetch() once for
/// each neighbour outside, in the order of the neighbours, and never for one inside. fetch() must
/// not change the image's buffer, extents or strides, because the kernel has read them before. What
/// it throws passes through the sampling call. A border used by several threads must be
/// thread-safe.
struct VOLUX_CORE_API Border {
    /// The end of the chain of tables.
    struct Empty {
        /// Root of every table.
        struct base_t {};
    };

    /// The table of a policy: one virtual fetch() for each element type.
    template <class Policy, class Parent>
    struct border_t;

    // Constructors and destructors are written out, here and in every policy: each call that takes
    // a policy by value runs some, so callers must be able to inline them, and a defaulted one
    // would not be exported. The constructor from a tag builds the static objects.
    /// @{
    /// A policy has no state to set, copy or free. Never throws; thread-safe.
    VOLUX_CORE_INLINE_API Border() {}
    constexpr explicit Border(detail::ConstantInitialized) noexcept {}
    VOLUX_CORE_INLINE_API Border(const Border&) {}
    VOLUX_CORE_INLINE_API Border& operator=(const Border&) { return *this; }
    VOLUX_CORE_INLINE_API virtual ~Border() {}
    /// @}

protected:
    /// The policy's table. Not const, because constness is part of the exported name.
    virtual border_t<Border, Empty>& get() = 0;

private:
    friend struct detail::RunTime;

    /// Throws base::Exception "invalid use of Border*". Only the base table calls it.
    template <class T>
    static T stub(const VxImage<T>& image, int x, int y, int z, unsigned int c, T value,
                  unsigned int width, unsigned int height, unsigned int depth);
};

/// The base table. Every fetch() throws base::Exception "invalid use of Border*", which ends a
/// sampling call whose policy has no table of its own.
template <>
struct VOLUX_CORE_API Border::border_t<Border, Border::Empty> : Border::Empty::base_t {
#define VOLUX_FETCH(T)                                                                            \
    virtual T fetch(Border& policy, const VxImage<T>& image, int x, int y, int z, unsigned int c, \
                    T value, unsigned int width, unsigned int height, unsigned int depth);
    /// Throws base::Exception. There is one for each element type T.
    VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_FETCH)
#undef VOLUX_FETCH
    virtual ~border_t();
};

/// The table of Policy, a class derived from Border with a member template fetch().
template <class Policy, class Parent>
struct VOLUX_CORE_LOCAL Border::border_t : Border::border_t<Border, Border::Empty> {
#define VOLUX_FETCH(T)                                                                             \
    T fetch(Border& policy, const VxImage<T>& image, int x, int y, int z, unsigned int c, T value, \
            unsigned int width, unsigned int height, unsigned int depth) override                  \
    {                                                                                              \
        return static_cast<Policy&>(policy).fetch(image, x, y, z, c, value, width, height, depth); \
    }
    /// Calls Policy::fetch(). There is one for each element type T.
    VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_FETCH)
#undef VOLUX_FETCH
};

/// Reads outside the image the value that the caller gives with each call.
struct VOLUX_CORE_API Constant : Border {
    /// @{
    /// A policy has no state to set, copy or free. Never throws; thread-safe.
    VOLUX_CORE_INLINE_API Constant() {}
    constexpr explicit Constant(detail::ConstantInitialized tag) noexcept : Border(tag) {}
    VOLUX_CORE_INLINE_API Constant(const Constant& other) : Border(other) {}
    VOLUX_CORE_INLINE_API Constant& operator=(const Constant&) { return *this; }
    VOLUX_CORE_INLINE_API ~Constant() override {}
    /// @}

    /// Returns `value`; reads neither the image nor the position. Never throws.
    template <class T>
    VOLUX_CORE_LOCAL T fetch(const VxImage<T>&, int, int, int, unsigned int, T value, unsigned int,
                             unsigned int, unsigned int)
    {
        return value;
    }

protected:
    border_t<Border, Empty>& get() override;
};

/// Reads outside the image the nearest voxel of its edge; ignores `value`.
struct VOLUX_CORE_API Replication : Border {
    /// @{
    /// A policy has no state to set, copy or free. Never throws; thread-safe.
    VOLUX_CORE_INLINE_API Replication() {}
    constexpr explicit Replication(detail::ConstantInitialized tag) noexcept : Border(tag) {}
    VOLUX_CORE_INLINE_API Replication(const Replication& other) : Border(other) {}
    VOLUX_CORE_INLINE_API Replication& operator=(const Replication&) { return *this; }
    VOLUX_CORE_INLINE_API ~Replication() override {}
    /// @}

    /// Returns channel c of the voxel at (x, y, z), each index clamped to its extent. Never throws.
    ///
    /// Tests nothing: for a channel out of bounds or an extent of 0, the behaviour is undefined.
    template <class T>
    VOLUX_CORE_LOCAL T fetch(const VxImage<T>& image, int x, int y, int z, unsigned int c, T,
                             unsigned int width, unsigned int height, unsigned int depth)
    {
        return image(detail::clamped(x, width), detail::clamped(y, height),
                     detail::clamped(z, depth), static_cast<int>(c));
    }

protected:
    border_t<Border, Empty>& get() override;
};

/// The two border policies as objects, to be passed by value, or by address as a Border*.
///
/// They are constant-initialised, because another library's initialisers may already sample through
/// them, and not const, because a Border* must be able to point to them. Thread-safe.
namespace InterpolationBorderType {
extern VOLUX_CORE_API Constant CONSTANT;        ///< reads the caller's value outside
extern VOLUX_CORE_API Replication REPLICATION;  ///< reads the nearest edge voxel outside
}  // namespace InterpolationBorderType

#undef VOLUX_FOR_EACH_ELEMENT_TYPE

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/BorderStubs.inc"

}  // namespace volux::core
