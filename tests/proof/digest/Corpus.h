// The volumes and the positions that the digests are taken of, the same with every compiler and
// processor. They are apart from the scenes that the tests draw: digests of two releases can be
// compared only as long as not one voxel of this corpus changes. A compiler is free to fuse
// products and sums here: every product that is added to is exact.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "support/ElementTypes.h"
#include "support/Volume.h"

namespace volux::digest {

using test::Extents;
using test::Layout;
using test::Volume;
using test::oracle::Position;

constexpr unsigned int kScenes = 12;  // each of the four layouts with one, two and three channels

class Generator {
public:
    explicit Generator(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits()
    {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(bits() % limit); }

    // From 0 up to but not including 1.
    double fraction() { return static_cast<double>(bits() >> 11U) * 0x1p-53; }

    template <class Choice, std::size_t count>
    Choice anyOf(const std::array<Choice, count>& choices)
    {
        return choices[below(static_cast<unsigned int>(count))];
    }

private:
    std::uint64_t state_;
};

template <class T>
T extremeElement(Generator& random)
{
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_floating_point_v<T>)
        return random.anyOf<T>(std::array<T, 8>{-T{0}, Limits::denorm_min(), Limits::max(),
                                                Limits::lowest(), Limits::infinity(),
                                                -Limits::infinity(), Limits::quiet_NaN(), T{0.5}});
    else
        return random.anyOf<T>(std::array<T, 3>{Limits::min(), Limits::max(), T{0}});
}

// From the whole range of an integer type; of either sign and with a fraction otherwise.
template <class T>
T wideElement(Generator& random)
{
    const std::uint64_t bits = random.bits();
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(static_cast<double>(static_cast<std::int32_t>(bits)) / 1024.0);
    else
        return static_cast<T>(bits);
}

// Mostly small, so that the last bits of a fraction survive in the sums.
template <class T>
T element(Generator& random)
{
    const unsigned int kind = random.below(200);
    if (kind == 0)
        return extremeElement<T>(random);
    return kind < 50 ? wideElement<T>(random) : static_cast<T>(random.below(250));
}

inline Layout layoutOf(unsigned int kind, const Extents& e, unsigned int channels)
{
    constexpr std::array<test::MakeLayout, 3> dense{test::interleaved, test::planar,
                                                    test::zFastest};
    if (kind < dense.size())
        return dense[kind](e.width, e.height, e.depth, channels);
    const unsigned int row = channels * e.width + 5;
    return {"gapped", e, channels, channels, row, row * e.height + 5, 1};
}

inline Position spacing(Generator& random)
{
    constexpr std::array<double, 5> spacings{1.0, 0.957, 1.5, 0.3, 49.0};
    return {random.anyOf(spacings), random.anyOf(spacings), random.anyOf(spacings)};
}

// The elements before, behind and between the voxels are drawn as well: whoever reads one is wrong.
template <class T>
Volume<T> volume(unsigned int scene, Generator& random)
{
    constexpr std::array<unsigned int, 8> extents{1, 2, 3, 5, 6, 7, 9, 12};
    const Extents e{random.anyOf(extents), random.anyOf(extents), random.anyOf(extents)};
    Volume<T> v{layoutOf(scene % 4, e, 1 + scene / 4), {}, 0, spacing(random)};
    v.origin = random.below(7);
    v.block.resize(v.origin + v.addressed() + 7);
    const bool isMask =
        scene % 3 == 1;  // of zeros and ones: many of its sums are just below a half
    for (T& value : v.block)
        value = isMask ? static_cast<T>(random.below(2)) : element<T>(random);
    return v;
}

// What Constant reads outside. Weighted sums of nothing but -0.0 are -0.0, unless they start with
// 0.0.
template <class T>
T outsideValue(unsigned int scene, Generator& random)
{
    const T drawn = element<T>(random);
    if constexpr (std::is_floating_point_v<T>)
        return scene % 3 == 0 ? -T{0} : drawn;
    else
        return drawn;
}

// A whole number in the volume or at most so many voxels outside.
inline double wholeCoordinate(Generator& random, unsigned int extent, unsigned int outside)
{
    const unsigned int places = extent + 2 * outside;
    return static_cast<double>(random.below(places)) - static_cast<double>(outside);
}

inline double ordinaryCoordinate(Generator& random, unsigned int extent)
{
    const double whole = wholeCoordinate(random, extent, 1);
    return whole + random.fraction();
}

// Edges, ties and negative whole numbers, or one unit in the last place to either side of one.
inline double edgeCoordinate(Generator& random, unsigned int extent)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double whole = wholeCoordinate(random, extent, 3);
    const double edge = whole + 0.5 * random.below(2);
    switch (random.below(3)) {
        case 0:
            return std::nextafter(edge, -infinity);
        case 1:
            return std::nextafter(edge, infinity);
        default:
            return edge;
    }
}

// Zeros of both signs, what is not finite, and the ends of the 32-bit and of the double range.
inline double farCoordinate(Generator& random)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array<double, 16> far{
        -0.0,          0x1p-1074,    -0x1p-1074,   infinity,
        -infinity,     1e10,         -1e10,        1e300,
        -1e300,        2147483645.0, 2147483648.0, -2147483646.5,
        -2147483648.0, 4294967296.5, 0x1p63,       std::numeric_limits<double>::quiet_NaN()};
    return random.anyOf(far);
}

// Four fifths of the positions are ordinary. Along one axis the others are at an edge or far away,
// and along the other two they are ordinary, at an edge or at a whole number.
inline Position position(Generator& random, const Extents& extents)
{
    const std::array<unsigned int, 3> extent{extents.width, extents.height, extents.depth};
    const bool isDelicate = random.below(5) == 0;
    const bool isFar = random.below(4) == 0;
    const unsigned int chosen = random.below(3);
    const unsigned int others = isDelicate ? random.below(4) : 0;
    std::array<double, 3> p{};
    for (unsigned int axis = 0; axis < 3; ++axis) {
        if (isDelicate && axis == chosen)
            p[axis] = isFar ? farCoordinate(random) : edgeCoordinate(random, extent[axis]);
        else if (others == 0)
            p[axis] = ordinaryCoordinate(random, extent[axis]);
        else
            p[axis] = others == 1 ? edgeCoordinate(random, extent[axis])
                                  : wholeCoordinate(random, extent[axis], 1);
    }
    return {p[0], p[1], p[2]};
}

}  // namespace volux::digest
