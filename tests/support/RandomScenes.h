// Volumes and positions drawn at random, with a liking for the places where sampling is delicate.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "ElementTypes.h"
#include "Random.h"
#include "WrappedVolume.h"

namespace volux::test {

template <class Choice, std::size_t count>
const Choice& anyOf(Random& random, const std::array<Choice, count>& choices)
{
    return choices[random.below(static_cast<unsigned int>(count))];
}

// From 0 up to but not including 1.
inline double fraction(Random& random)
{
    return static_cast<double>(random.bits() >> 11U) * 0x1p-53;
}

template <class T>
T rareElement(Random& random)
{
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_floating_point_v<T>)
        return anyOf<T>(random, std::array<T, 8>{-T{0}, Limits::denorm_min(), Limits::max(),
                                                 Limits::lowest(), Limits::infinity(),
                                                 -Limits::infinity(), Limits::quiet_NaN(), T{0.5}});
    else
        return anyOf<T>(random, std::array<T, 4>{Limits::min(), Limits::max(), T{0}, T{1}});
}

// Mostly small, so that fractions survive in the sums; now and then from the whole range.
template <class T>
T randomElement(Random& random, bool withRareOnes)
{
    const unsigned int kind = random.below(40);
    if (kind == 0 && withRareOnes)
        return rareElement<T>(random);
    if (kind < 10)
        return someValue<T>(random.bits());
    return static_cast<T>(random.below(250));
}

inline oracle::Position randomSpacing(Random& random)
{
    constexpr std::array<double, 6> spacings{1.0, 1.0, 0.957, 1.5, 0.3, 49.0};
    return {anyOf(random, spacings), anyOf(random, spacings), anyOf(random, spacings)};
}

// Interleaved rows and slices with random gaps behind them.
inline Layout withGaps(const Extents& e, unsigned int channels, Random& random)
{
    Layout l = interleaved(e.width, e.height, e.depth, channels);
    l.name = "gapped";
    l.strideY += random.below(4);
    l.strideZ = l.strideY * e.height + random.below(9);
    return l;
}

// One of the four ways in which elements are usually arranged.
inline Layout randomLayout(Random& random, const Extents& e, unsigned int channels)
{
    constexpr std::array<MakeLayout, 4> layouts{interleaved, planar, zFastest, nullptr};
    const MakeLayout make = anyOf(random, layouts);
    return make == nullptr ? withGaps(e, channels, random)
                           : make(e.width, e.height, e.depth, channels);
}

template <class T>
void fillAtRandom(Volume<T>& volume, Random& random, bool withRareOnes)
{
    for (T& element : volume.block)
        element = randomElement<T>(random, withRareOnes);
}

// Guards before, behind and in the gaps are random elements as well: whoever reads one is wrong.
template <class T>
Volume<T> randomVolume(Random& random, const Layout& layout)
{
    Volume<T> v{layout, {}, random.below(7), randomSpacing(random)};
    v.block.resize(v.origin + v.addressed() + random.below(7));
    fillAtRandom(v, random, random.below(3) == 0);
    return v;
}

template <class T>
Volume<T> randomVolume(Random& random)
{
    constexpr std::array<unsigned int, 8> extents{1, 1, 2, 3, 4, 5, 6, 9};
    constexpr std::array<unsigned int, 4> channels{1, 1, 2, 3};
    const Extents e{anyOf(random, extents), anyOf(random, extents), anyOf(random, extents)};
    return randomVolume<T>(random, randomLayout(random, e, anyOf(random, channels)));
}

// Zeros of both signs, what is not finite, and the ends of the 32-bit and of the double range.
inline double rareCoordinate(Random& random)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array<double, 16> rare{
        -0.0,          0x1p-1074,    -0x1p-1074,   infinity,
        -infinity,     1e10,         -1e10,        1e300,
        -1e300,        2147483645.0, 2147483648.0, -2147483646.0,
        -2147483648.0, 4294967296.0, 0x1p63,       std::numeric_limits<double>::quiet_NaN()};
    return anyOf(random, rare);
}

inline double nextTo(double value, Random& random)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    return std::nextafter(value, random.below(2) == 0 ? -infinity : infinity);
}

// A whole number within four voxels of the volume.
inline double wholeCoordinate(Random& random, unsigned int extent)
{
    return static_cast<double>(random.below(extent + 8)) - 4.0;
}

inline double randomCoordinate(Random& random, unsigned int extent)
{
    const double whole = wholeCoordinate(random, extent);
    const double tie = whole + 0.5;
    const unsigned int kind = random.below(32);
    if (kind == 0)
        return rareCoordinate(random);
    if (kind == 1)
        return (fraction(random) - 0.5) * 4e9;
    if (kind == 2)  // about the ends of the 32-bit range
        return std::copysign(2147483644.0 + 0.5 * random.below(12), whole);
    if (kind < 6)
        return nextTo(whole, random);
    if (kind < 9)
        return nextTo(tie, random);
    if (kind < 13)
        return whole;
    if (kind < 17)
        return tie;
    return whole + fraction(random);
}

inline oracle::Position randomPosition(Random& random, const Extents& extents)
{
    return {randomCoordinate(random, extents.width), randomCoordinate(random, extents.height),
            randomCoordinate(random, extents.depth)};
}

// The same place in physical units, as far as a multiplication hits it.
inline oracle::Position multiply(const oracle::Position& voxel, const oracle::Position& spacing)
{
    return {voxel.x * spacing.x, voxel.y * spacing.y, voxel.z * spacing.z};
}

}  // namespace volux::test
