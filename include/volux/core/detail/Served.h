/// @file
/// What volux_core is instantiated for, and the sentences with which a compiler refuses the rest.
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

/// First template parameter of the overloads that only a call without template arguments can
/// select.
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

/// Always false; does not compile for policies that volux_core does not serve.
///
/// The noexcept clauses of the sampling templates call it, because a compiler evaluates them for
/// the one overload that a call selects, and they are no part of the exported names. So a sentence
/// stops what would otherwise be an unresolved symbol.
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

/// I is the type of the interpolator argument: a kernel, or Interpolator*.
template <class I, class B = Constant>
constexpr bool byValue()
{
    constexpr bool isServed = isKernel<I> || std::is_same_v<I, Interpolator*>;
    return refuseUnless<isServed, isBorderKind<B>>();
}

/// The interpolator argument is an Interpolator*, which I names Interpolator or Interpolator*.
template <class I, class B = Constant>
constexpr bool byAddress()
{
    constexpr bool isServed = std::is_same_v<std::remove_pointer_t<I>, Interpolator>;
    return refuseUnless<isServed, isBorderKind<B>>();
}

/// Converts the address of a policy to that of its base.
template <class Base, class Policy>
constexpr Base* asBase(Policy* policy)
{
    constexpr bool isPolicy = std::is_convertible_v<Policy*, Base*>;
    static_assert(isPolicy, "volux::core takes the address of a policy that is not const.");
    if constexpr (isPolicy) {
        return policy;
    } else {
        return nullptr;
    }
}

}  // namespace detail
}  // namespace volux::core

#undef VOLUX_FOR_EACH_ELEMENT_TYPE
