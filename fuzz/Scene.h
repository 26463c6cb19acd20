// Small volumes, and positions about them, out of what the fuzzer makes up.
#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "Input.h"
#include "support/ElementTypes.h"
#include "support/Volume.h"

namespace volux::fuzz {

namespace oracle = test::oracle;

/// A whole number near the volume, one with a fraction of 1/256, a neighbour of a half, or any
/// bits.
inline double someCoordinate(Input& input)
{
    const unsigned int kind = input.below(4);
    if (kind == 0)
        return input.raw<double>();
    const double whole = static_cast<int>(input.below(16)) - 5;
    if (kind == 1)
        return whole;
    if (kind == 2)
        return whole + input.below(256) / 256.0;
    return std::nextafter(whole + 0.5 * input.below(2), input.flag() ? 1e300 : -1e300);
}

inline oracle::Position somePosition(Input& input)
{
    const double x = someCoordinate(input);
    const double y = someCoordinate(input);
    return {x, y, someCoordinate(input)};
}

/// Any that an image takes.
inline double someSpacing(Input& input)
{
    const unsigned int kind = input.below(4);
    const double length = kind == 0 ? input.raw<double>() : 0.5 * kind;
    return length <= 0.0 ? 1.0 : length;
}

inline oracle::Position someSpacings(Input& input)
{
    const double x = someSpacing(input);
    const double y = someSpacing(input);
    return {x, y, someSpacing(input)};
}

/// The axes in any order, with unused elements in between or without.
inline test::Layout someLayout(Input& input)
{
    test::Layout l{"any", {}, 0, 0, 0, 0, 0};
    l.extents = {1 + input.below(5), 1 + input.below(5), 1 + input.below(5)};
    l.channels = 1 + input.below(2);
    const std::array<unsigned int*, 4> strides{&l.strideC, &l.strideX, &l.strideY, &l.strideZ};
    const std::array<unsigned int, 4> extents{l.channels, l.extents.width, l.extents.height,
                                              l.extents.depth};
    const unsigned int turn = input.below(4);
    const unsigned int gap = input.below(3);
    unsigned int next = 1;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t axis = (i + turn) % 4;
        *strides[axis] = next;
        next = next * extents[axis] + gap;
    }
    return l;
}

template <class T>
test::Volume<T> someVolume(Input& input)
{
    const test::Layout layout = someLayout(input);
    test::Volume<T> v{layout, std::vector<T>(layout.addressed()), 0, someSpacings(input)};
    const std::uint64_t seed = input.raw<std::uint8_t>();
    for (std::size_t i = 0; i < v.block.size(); ++i)
        v.block[i] = test::someValue<T>(seed + i);
    for (unsigned int own = input.below(16); own > 0; --own)
        v.block[input.below(256) % v.block.size()] = input.raw<T>();
    return v;
}

}  // namespace volux::fuzz
