// What Labels must read, from its definition, and maps to read.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "resample/Expected.h"
#include "support/SamplingOracle.h"

namespace volux::test {

struct Voter {
    double label;
    double weight;
    bool isNearest;
};

inline bool isOneLabel(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

// The eight neighbours in order; read(x, y, z) gives a voxel or what is outside.
template <class Read>
std::vector<Voter> votersAt(const Read& read, const oracle::Position& p)
{
    const auto [ax, ay, az] =
        std::array{oracle::linearAxis(p.x), oracle::linearAxis(p.y), oracle::linearAxis(p.z)};
    std::vector<Voter> voters;
    for (std::size_t n = 0; n < 8; ++n) {
        const std::size_t i = n % 2, j = n / 2 % 2, k = n / 4;
        const std::int64_t x = oracle::wrapTo32Bits(ax.base + static_cast<std::int64_t>(i));
        const std::int64_t y = oracle::wrapTo32Bits(ay.base + static_cast<std::int64_t>(j));
        const std::int64_t z = oracle::wrapTo32Bits(az.base + static_cast<std::int64_t>(k));
        const double planeWeight = ax.weight[i] * ay.weight[j];
        voters.push_back({static_cast<double>(read(x, y, z)), planeWeight * az.weight[k],
                          x == oracle::nearestIndex(p.x) && y == oracle::nearestIndex(p.y) &&
                              z == oracle::nearestIndex(p.z)});
    }
    return voters;
}

inline double scoreOf(double label, const std::vector<Voter>& voters)
{
    std::vector<double> weights;
    for (const Voter& voter : voters)
        if (isOneLabel(voter.label, label))
            weights.push_back(voter.weight);
    double score = weights[0];
    for (std::size_t n = 1; n < weights.size(); ++n)
        score = score + weights[n];
    return std::isnan(score) ? -kInfinity : score;
}

// What the definition says: the labels of the greatest score, and one of them.
inline double electedBy(const std::vector<Voter>& voters)
{
    double greatest = -kInfinity;
    for (const Voter& voter : voters)
        greatest = std::max(greatest, scoreOf(voter.label, voters));
    double lowest = kNaN;
    double nearest = kNaN;
    bool isNearestTied = false;
    for (const Voter& voter : voters) {
        if (scoreOf(voter.label, voters) != greatest)
            continue;
        if (std::isnan(lowest) || voter.label < lowest)
            lowest = voter.label;
        if (voter.isNearest) {
            isNearestTied = true;
            nearest = voter.label;
        }
    }
    const double elected = isNearestTied ? nearest : lowest;
    for (const Voter& voter : voters)
        if (isOneLabel(voter.label, elected))
            return voter.label;
    return kNaN;
}

template <class T, class Outside>
T expectedAt(const Volume<T>& volume, const oracle::Position& p, std::int64_t c,
             const Outside& outside)
{
    const oracle::Reader<T, Outside> read{volume, c, outside};
    return static_cast<T>(electedBy(votersAt(read, p)));
}

// Few labels, so that they meet: numbers that no float or short holds, zeros of both signs and NaN
// where the type has them.
template <class T>
T someLabel(Random& random, unsigned int count)
{
    using Limits = std::numeric_limits<T>;
    const unsigned int n = random.below(count);
    if constexpr (std::is_floating_point_v<T>) {
        const std::array<T, 8> labels{T{0},          -T{0},
                                      T{2},          Limits::quiet_NaN(),
                                      T{1} / T{3},   -Limits::infinity(),
                                      Limits::max(), Limits::denorm_min()};
        return labels.at(n);
    } else {
        const std::array<T, 8> labels{T{3}, T{1}, Limits::max(), Limits::min(),
                                      T{0}, T{2}, T{200},        static_cast<T>(Limits::max() - 1)};
        return labels.at(n);
    }
}

// Regions of a few voxels, as maps have them, or no order at all.
template <class T>
Volume<T> labelVolume(Random& random, const Layout& layout)
{
    Volume<T> volume = blankVolume<T>(layout);
    const unsigned int count = random.between(2, 8);
    const unsigned int run = random.below(3) == 0 ? 1 : 5;
    T label = someLabel<T>(random, count);
    for (T& voxel : volume.block) {
        if (random.below(run) == 0)
            label = someLabel<T>(random, count);
        voxel = label;
    }
    return volume;
}

template <class T>
WrappedVolume<T> someMap(Random& random)
{
    constexpr std::array<unsigned int, 6> extents{1, 2, 3, 4, 5, 9};
    const Extents e{anyOf(random, extents), anyOf(random, extents), anyOf(random, extents)};
    return WrappedVolume<T>(labelVolume<T>(random, randomLayout(random, e, random.between(1, 2))));
}

}  // namespace volux::test
