/// @file
/// Border policies: what a sampling kernel reads for a voxel position outside the image.
///
/// Two policies exist. Constant reads a value that travels with each call; Replication reads the
/// nearest edge voxel. A kernel takes its border by value, chosen at compile time, or as a Border*,
/// chosen at run time; the results have the same bits.
///
/// Policies hold no state. Every operation is O(1), allocates nothing and is safe from any number
/// of threads.
#pragma once

#include "volux/core/Export.h"
#include "volux/core/detail/Served.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::core {

template <class T>
class VxImage;

namespace detail {

struct RunTime;

// Below first, above second: the order decides what an extent of 0 gives (-1).
inline int clamped(int index, unsigned int extent)
{
    const int lowest = index < 0 ? 0 : index;
    const int last = static_cast<int>(extent - 1U);
    return last < lowest ? last : lowest;
}

}  // namespace detail

/// Base of the border policies, for borders chosen at run time.
///
/// A border of your own derives from Border and overrides get() to return a table: an object of
/// border_t<YourBorder, Border>, if YourBorder has a member template fetch() like those of Constant
/// and Replication, or of your own class derived from border_t<Border, Border::Empty>. It is passed
/// by its address, which is that of a living object; it may be null if nothing outside is read. A
/// kernel asks get() and then fetch() once for each neighbour outside the image, in the order of
/// the neighbours, and never for one inside. fetch() leaves the buffer, the extents and the strides
/// of the image as they are: a kernel has looked at them before.
struct VOLUX_CORE_API Border {
    /// The end of the chain of tables.
    struct Empty {
        /// Root of every table.
        struct base_t {};
    };

    /// The table of a policy: one virtual fetch() for each element type.
    template <class Policy, class Parent>
    struct border_t;

    // Constructors and destructors are written out, here and in every policy, because each call
    // makes some where it takes a policy by value or supplies one of its own: callers inline them,
    // and a defaulted one would not be exported.
    VOLUX_CORE_INLINE_API Border() {}  ///< A policy has no state.
    /// For the static objects alone.
    constexpr explicit Border(detail::ConstantInitialized) noexcept {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Border(const Border&) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Border& operator=(const Border&) { return *this; }
    VOLUX_CORE_INLINE_API virtual ~Border() {}

protected:
    /// The policy's table.
    virtual border_t<Border, Empty>& get() = 0;

private:
    friend struct detail::RunTime;

    /// Throws base::Exception "invalid use of Border*"; reached from the base table alone.
    template <class T>
    static T stub(const VxImage<T>& image, int x, int y, int z, unsigned int c, T value,
                  unsigned int width, unsigned int height, unsigned int depth);
};

/// The base table. Every fetch() throws base::Exception "invalid use of Border*", so a policy that
/// has no table of its own ends the sample.
template <>
struct VOLUX_CORE_API Border::border_t<Border, Border::Empty> : Border::Empty::base_t {
#define VOLUX_FETCH(T)                                                                            \
    virtual T fetch(Border& policy, const VxImage<T>& image, int x, int y, int z, unsigned int c, \
                    T value, unsigned int width, unsigned int height, unsigned int depth);
    /// Throws. There is one for each element type T.
    VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_FETCH)
#undef VOLUX_FETCH
    virtual ~border_t();
};

/// The table of Policy, a class derived from Border with a member template fetch(): forwards to it.
template <class Policy, class Parent>
struct VOLUX_CORE_LOCAL Border::border_t : Border::border_t<Border, Border::Empty> {
#define VOLUX_FETCH(T)                                                                             \
    T fetch(Border& policy, const VxImage<T>& image, int x, int y, int z, unsigned int c, T value, \
            unsigned int width, unsigned int height, unsigned int depth) override                  \
    {                                                                                              \
        return static_cast<Policy&>(policy).fetch(image, x, y, z, c, value, width, height, depth); \
    }
    /// Calls the policy's own fetch(). There is one for each element type T.
    VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_FETCH)
#undef VOLUX_FETCH
};

/// Outside the image, the value that the caller gives with each call.
struct VOLUX_CORE_API Constant : Border {
    VOLUX_CORE_INLINE_API Constant() {}  ///< A policy has no state.
    /// For the static objects alone.
    constexpr explicit Constant(detail::ConstantInitialized tag) noexcept : Border(tag) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Constant(const Constant& other) : Border(other) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Constant& operator=(const Constant&) { return *this; }
    VOLUX_CORE_INLINE_API ~Constant() override {}

    /// Returns `value`; reads neither the image nor the position.
    template <class T>
    VOLUX_CORE_LOCAL T fetch(const VxImage<T>&, int, int, int, unsigned int, T value, unsigned int,
                             unsigned int, unsigned int)
    {
        return value;
    }

protected:
    border_t<Border, Empty>& get() override;
};

/// Outside the image, the nearest voxel of its edge; `value` is ignored.
struct VOLUX_CORE_API Replication : Border {
    VOLUX_CORE_INLINE_API Replication() {}  ///< A policy has no state.
    /// For the static objects alone.
    constexpr explicit Replication(detail::ConstantInitialized tag) noexcept : Border(tag) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Replication(const Replication& other) : Border(other) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Replication& operator=(const Replication&) { return *this; }
    VOLUX_CORE_INLINE_API ~Replication() override {}

    /// Channel c of the voxel at (x, y, z), each index clamped to its extent.
    ///
    /// Tests nothing: a channel outside the image, or an extent of 0, reads outside the buffer.
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
/// Constant-initialised: another module's initialisers may already sample through them.
namespace InterpolationBorderType {
extern VOLUX_CORE_API Constant CONSTANT;        ///< the caller's value
extern VOLUX_CORE_API Replication REPLICATION;  ///< the nearest edge voxel
}  // namespace InterpolationBorderType

#undef VOLUX_FOR_EACH_ELEMENT_TYPE

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/BorderStubs.inc"

}  // namespace volux::core
