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
#include "SamplingOracle.h"

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

enum class Layout { Interleaved, Planar, ZFastest, Padded };

template <class T>
void layOut(oracle::Volume<T>& v, Layout layout, Random& random)
{
    const oracle::Extents& e = v.extents;
    const std::int64_t rowGap = layout == Layout::Padded ? random.below(4) : 0;
    const std::int64_t sliceGap = layout == Layout::Padded ? random.below(9) : 0;
    if (layout == Layout::ZFastest) {
        v.strideZ = v.channels;
        v.strideY = v.strideZ * e.depth;
        v.strideX = v.strideY * e.height;
        v.strideC = 1;
    } else if (layout == Layout::Planar) {
        v.strideX = 1;
        v.strideY = e.width;
        v.strideZ = e.width * e.height;
        v.strideC = e.width * e.height * e.depth;
    } else {
        v.strideX = v.channels;
        v.strideY = v.channels * e.width + rowGap;
        v.strideZ = v.strideY * e.height + sliceGap;
        v.strideC = 1;
    }
}

inline oracle::Position randomSpacing(Random& random)
{
    constexpr std::array<double, 6> spacings{1.0, 1.0, 0.957, 1.5, 0.3, 49.0};
    return {anyOf(random, spacings), anyOf(random, spacings), anyOf(random, spacings)};
}

// Guards before, behind and in the gaps are random elements as well: whoever reads one is wrong.
template <class T>
oracle::Volume<T> randomVolume(Random& random)
{
    constexpr std::array<std::int64_t, 8> extents{1, 1, 2, 3, 4, 5, 6, 9};
    constexpr std::array<std::int64_t, 4> channels{1, 1, 2, 3};
    constexpr std::array<Layout, 4> layouts{Layout::Interleaved, Layout::Planar, Layout::ZFastest,
                                            Layout::Padded};
    oracle::Volume<T> v;
    v.extents = {anyOf(random, extents), anyOf(random, extents), anyOf(random, extents)};
    v.channels = anyOf(random, channels);
    layOut(v, anyOf(random, layouts), random);
    v.spacing = randomSpacing(random);
    v.origin = random.below(7);
    const std::int64_t last = v.strideX * (v.extents.width - 1) +
                              v.strideY * (v.extents.height - 1) +
                              v.strideZ * (v.extents.depth - 1) + v.strideC * (v.channels - 1);
    v.block.resize(static_cast<std::size_t>(v.origin + last + 1 + random.below(7)));
    const bool withRareOnes = random.below(3) == 0;
    for (T& element : v.block)
        element = randomElement<T>(random, withRareOnes);
    return v;
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
inline double wholeCoordinate(Random& random, std::int64_t extent)
{
    return static_cast<double>(random.below(static_cast<unsigned int>(extent) + 8)) - 4.0;
}

inline double randomCoordinate(Random& random, std::int64_t extent)
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

inline oracle::Position randomPosition(Random& random, const oracle::Extents& extents)
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
