// What antialiasing must give, from its definition: the mean of the sub-samples of each voxel, each
// of them a call of volux_core or the value outside, at positions computed step by step.
#pragma once

#include <cmath>
#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

#include "SamplingOracle.h"
#include "SingleCalls.h"
#include "volux/resample/Subsamples.h"

namespace volux::test {

using resample::Subsamples;

// As many as a step is long, in numbers far from the ends of the doubles.
inline unsigned int subsamplesAlong(const AffineMap& map, int axis)
{
    volatile double square = map.rows[0][axis] * map.rows[0][axis];
    volatile double product = map.rows[1][axis] * map.rows[1][axis];
    square = square + product;
    product = map.rows[2][axis] * map.rows[2][axis];
    square = square + product;
    const double count = std::ceil(std::sqrt(square) * (1.0 - 1.0 / 1048576.0));
    return count < 1.0 ? 1 : static_cast<unsigned int>(count);
}

inline Subsamples subsamplesOf(const AffineMap& map, const Subsamples& wanted)
{
    Subsamples found = wanted;
    if (found.x == 0)
        found.x = subsamplesAlong(map, 0);
    if (found.y == 0)
        found.y = subsamplesAlong(map, 1);
    if (found.z == 0)
        found.z = subsamplesAlong(map, 2);
    return found;
}

inline AffineMap finerMapOf(const AffineMap& map, const Subsamples& n)
{
    if (n.x == 1 && n.y == 1 && n.z == 1)
        return map;
    const unsigned int counts[3] = {n.x, n.y, n.z};
    AffineMap finer = map;
    for (int row = 0; row < 3; ++row) {
        volatile double origin = map.rows[row][3];
        for (int axis = 0; axis < 3; ++axis) {
            const double count = counts[axis];
            finer.rows[row][axis] = map.rows[row][axis] / count;
            const volatile double moved = finer.rows[row][axis] * ((1.0 - count) / 2.0);
            origin = origin + moved;
        }
        finer.rows[row][3] = origin;
    }
    return finer;
}

// There must be a sample at least; they are summed in their order.
inline double meanOf(const std::vector<double>& samples)
{
    volatile double sum = samples[0];
    double least = samples[0];
    double greatest = samples[0];
    for (std::size_t n = 1; n < samples.size(); ++n) {
        sum = sum + samples[n];
        if (samples[n] < least)
            least = samples[n];
        if (samples[n] > greatest)
            greatest = samples[n];
    }
    const double mean = sum / static_cast<double>(samples.size());
    if (mean < least)
        return least;
    return mean > greatest ? greatest : mean;
}

// The label of most samples; among several that of the nearest voxel to the centre, else the
// lowest.
inline double electedOf(const std::vector<double>& samples, double nearest)
{
    const auto areSame = [](double a, double b) {
        return a == b || (std::isnan(a) && std::isnan(b));
    };
    std::vector<std::pair<double, int>> counts;
    for (const double sample : samples) {
        std::size_t n = 0;
        while (n < counts.size() && !areSame(counts[n].first, sample))
            ++n;
        if (n == counts.size())
            counts.push_back({sample, 0});
        ++counts[n].second;
    }
    std::pair<double, int> winner = counts[0];
    for (const auto& [label, votes] : counts)
        if (votes > winner.second ||
            (votes == winner.second && (label < winner.first || std::isnan(winner.first))))
            winner = {label, votes};
    for (const auto& [label, votes] : counts)
        if (votes == winner.second && areSame(label, nearest))
            return label;
    return winner.first;
}

// Voxel (i, j, k) of a plane of the grid, before it is stored. `lead` gives the place in the source
// for one where a map leads.
template <class T, class Lead>
double meanReading(const VxImage<T>& source, const AffineMap& map, const Subsamples& n,
                   unsigned int i, unsigned int j, unsigned int k, int channel,
                   const Options& options, const Lead& lead)
{
    const AffineMap finer = finerMapOf(map, n);
    std::vector<double> samples;
    for (unsigned int z = k * n.z; z < (k + 1) * n.z; ++z)
        for (unsigned int y = j * n.y; y < (j + 1) * n.y; ++y)
            for (unsigned int x = i * n.x; x < (i + 1) * n.x; ++x)
                samples.push_back(
                    gridReading(source, lead(positionOf(finer, x, y, z)), channel, options));
    if (samples.size() == 1)
        return samples[0];
    if (options.interpolator != &resample::LABELS)
        return meanOf(samples);
    Options nearest = options;
    nearest.interpolator = &NEAREST_NEIGHBOR;
    const Position centre = lead(positionOf(map, i, j, k));
    return electedOf(samples, gridReading(source, centre, channel, nearest));
}

template <class T>
double meanReading(const VxImage<T>& source, const AffineMap& map, unsigned int i, unsigned int j,
                   unsigned int k, int channel, const Options& options)
{
    return meanReading(source, map, subsamplesOf(map, options.subsamples), i, j, k, channel,
                       options, [](const Position& p) { return p; });
}

template <class T>
T storedReading(double reading, const Options& options)
{
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(reading);
    else
        return options.overflow == Overflow::SATURATE ? saturated<T>(reading)
                                                      : oracle::roundTo<T>(reading);
}

}  // namespace volux::test
