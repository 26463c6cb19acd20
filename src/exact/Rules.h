// The rules of the arithmetic for one sample, in doubles and 32-bit indices.
#pragma once

#include <cmath>

#include "Index.h"
#include "Kernel.h"
#include "Pair.h"
#include "Truncation.h"

namespace volux::exact {

inline int truncated(double position)
{
    return truncateToInt(position);
}
inline int steppedDownUnless(bool stays, int index)
{
    return wrappingAdd(index, -static_cast<int>(!stays));
}
inline int offset(int index, int steps)
{
    return wrappingAdd(index, steps);
}
inline double numberOf(int index)
{
    return index;
}
inline double withSignOf(double magnitude, double sign)
{
    return std::copysign(magnitude, sign);
}
void weigh(double position, int first, double (&weights)[4]);

#include "Rules.inc"

// The same weights as by doubles, two at a time.
inline void weigh(double position, int first, double (&weights)[4])
{
    double distances[4];
    measure(position, first, distances);
    const Pair outer = outerCubicWeight(Pair(distances[0], distances[3]));
    const Pair inner = innerCubicWeight(Pair(distances[1], distances[2]));
    store(firsts(outer, inner), weights);
    store(seconds(inner, outer), weights + 2);
}

// The sums of one sample, whose neighbours along x come in twos.
template <>
struct WeightedSum<Kernel::LINEAR, Pair> {
    double products = -0.0;

    void add(Pair weights, Pair voxels)
    {
        const Pair both = voxels * weights;
        products += both.first();
        products += both.second();
    }
    double result() const { return products; }
};

template <>
struct WeightedSum<Kernel::CUBIC, Pair> {
    Pair sums{0.0};  // of the weights, and of the weighted voxels

    void add(Pair weights, Pair voxels)
    {
        const Pair both = voxels * weights;
        sums = sums + firsts(weights, both);
        sums = sums + seconds(weights, both);
    }
    double result() const { return sums.second() / sums.first(); }
};

// Where a sample is read: its neighbours along each axis, and their weights.
template <Kernel K>
struct Place {
    Neighbours<K, double> x;
    Neighbours<K, double> y;
    Neighbours<K, double> z;

    Place(double atX, double atY, double atZ) : x(atX), y(atY), z(atZ) {}

    // For Cubic: near the ends of the 32-bit range its neighbourhood wraps, and then it holds no
    // voxel.
    bool isEmpty() const
    {
        const auto wraps = [](int first) { return wrappingAdd(first, reach(K) - 1) < first; };
        return wraps(x.first) || wraps(y.first) || wraps(z.first);
    }

    // What the kernel gives. `rows(j, k)` gives a row of neighbours: a function of i that gives
    // neighbours 2 * i and 2 * i + 1.
    template <class Rows>
    [[gnu::always_inline]] double sum(const Rows& rows) const
    {
        Pair pairs[reach(K) / 2];
        for (int i = 0; i < reach(K); i += 2) {
            pairs[i / 2] = widened(x.weights + i);
        }
        return weightedSum<WeightedSum<K, Pair>>(pairs, y.weights, z.weights, rows);
    }
};

}  // namespace volux::exact
