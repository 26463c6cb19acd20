/// @file
/// What the module's instantiations serve, and the sentences that refuse the rest while compiling.
#pragma once

#include <type_traits>

#include "volux/core/detail/ElementTypes.inc"

namespace volux::core {

struct Border;
struct Constant;
struct Replication;
struct Interpolator;
struct NearestNeighbor;
struct Linear;
struct Cubic;

namespace detail {

/// Selects the constructors that build the static policy objects before any code runs.
struct ConstantInitialized {};

/// First parameter of the overloads that only a call without template arguments can select.
enum class Deduced {};

template <class T>
inline constexpr bool isElementType = false;
#define VOLUX_IS_ELEMENT_TYPE(T) \
    template <>                  \
    inline constexpr bool isElementType<T> = true;
VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_IS_ELEMENT_TYPE)
#undef VOLUX_IS_ELEMENT_TYPE

template <class I>
inline constexpr bool isKernel =
    std::is_same_v<I, NearestNeighbor> || std::is_same_v<I, Linear> || std::is_same_v<I, Cubic>;
template <class B>
inline constexpr bool isBorderKind =
    std::is_same_v<B, Constant> || std::is_same_v<B, Replication> || std::is_same_v<B, Border*>;

/// Always false; refuses to compile for policies that the module does not serve.
///
/// It stands in the noexcept clauses of the sampling templates, because those are evaluated
/// for the one overload that a call selects, leave the exported names alone, and so turn what would
/// be an unresolved symbol into a sentence.
template <bool InterpolatorServed, bool BorderServed>
constexpr bool refuseUnless()
{
    static_assert(InterpolatorServed,
                  "volux::core takes NearestNeighbor, Linear and Cubic by value; pass any other "
                  "interpolator by its address and leave the template arguments out.");
    static_assert(BorderServed,
                  "volux::core takes Constant and Replication by value; pass any other border by "
                  "its address and leave the template arguments out.");
    return false;
}

/// A kernel by value.
template <class I, class B = Constant>
constexpr bool byValue()
{
    return refuseUnless<isKernel<I>, isBorderKind<B>>();
}

/// A run-time interpolator whose template argument is spelt Interpolator.
template <class I, class B = Constant>
constexpr bool byAddress()
{
    return refuseUnless<std::is_same_v<I, Interpolator>, isBorderKind<B>>();
}

/// A kernel by value, or a run-time interpolator whose template argument is spelt Interpolator*.
template <class I, class B = Constant>
constexpr bool byValueOrAddress()
{
    return refuseUnless < isKernel<I> || std::is_same_v<I, Interpolator*>, isBorderKind < B >> ();
}

}  // namespace detail
}  // namespace volux::core

#undef VOLUX_FOR_EACH_ELEMENT_TYPE
