// The seven element types, their names, and reproducible values of each.
#pragma once

#include <cstdint>
#include <tuple>
#include <type_traits>

namespace volux::test {

/// The one list of the element types, as the arguments of any template.
template <template <class...> class List>
using OfElementTypes = List<unsigned char, short, unsigned short, int, unsigned int, float, double>;

/// Calls visit(T{}) for each element type.
template <class Visit>
void forEachElementType(const Visit& visit)
{
    std::apply([&](auto... zeros) { (visit(zeros), ...); }, OfElementTypes<std::tuple>());
}

/// Calls visit(T{}) with the element type of that number, modulo 7.
template <class Visit>
void withElementType(std::uint64_t number, const Visit& visit)
{
    std::uint64_t n = number % std::tuple_size_v<OfElementTypes<std::tuple>>;
    forEachElementType([&](auto zero) {
        if (n-- == 0)
            visit(zero);
    });
}

template <class T>
constexpr const char* elementTypeName()
{
    if constexpr (std::is_same_v<T, unsigned char>)
        return "UnsignedChar";
    else if constexpr (std::is_same_v<T, short>)
        return "Short";
    else if constexpr (std::is_same_v<T, unsigned short>)
        return "UnsignedShort";
    else if constexpr (std::is_same_v<T, int>)
        return "Int";
    else if constexpr (std::is_same_v<T, unsigned int>)
        return "UnsignedInt";
    else if constexpr (std::is_same_v<T, float>)
        return "Float";
    else if constexpr (std::is_same_v<T, double>)
        return "Double";
}

constexpr std::uint64_t scrambled(std::uint64_t seed)
{
    seed += 0x9E3779B97F4A7C15U;
    seed = (seed ^ (seed >> 30U)) * 0xBF58476D1CE4E5B9U;
    seed = (seed ^ (seed >> 27U)) * 0x94D049BB133111EBU;
    return seed ^ (seed >> 31U);
}

/// A value of either sign (where T has one) from T's whole range or, for float and double, a finite
/// one with a fraction. The same seed gives the same value everywhere. Never zero, so that it can
/// not be mistaken for cleared memory or for an outside read.
template <class T>
constexpr T someValue(std::uint64_t seed)
{
    const std::uint64_t bits = scrambled(seed);
    T value{};
    if constexpr (std::is_floating_point_v<T>)
        value = static_cast<T>(static_cast<std::int32_t>(bits)) / static_cast<T>(1024);
    else
        value = static_cast<T>(bits);
    return value == T{} ? T{1} : value;
}

}  // namespace volux::test
