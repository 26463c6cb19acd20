// The vote of Labels for one sample, in doubles.
#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

#include "exact/Rules.h"

namespace volux::resample::detail {

using exact::firstNeighbour;
using exact::Kernel;

inline bool both(bool a, bool b)
{
    return a && b;
}
inline bool either(bool a, bool b)
{
    return a || b;
}
inline bool anyOf(bool condition)
{
    return condition;
}
inline double greater(double a, double b)
{
    return b > a ? b : a;
}
inline bool isNaN(double number)
{
    return std::isnan(number);
}
inline double select(bool condition, double yes, double no)
{
    return condition ? yes : no;
}
inline double zeroUnless(bool condition, double yes)
{
    return condition ? yes : 0.0;
}

#include "Vote.inc"

// What Labels reads at a position. `neighbours(i, j, k)` gives one of the two along each axis; each
// is asked for once, x fastest.
template <class T, class Neighbour>
double labelAt(double x, double y, double z, const Neighbour& neighbours)
{
    const exact::Neighbours<Kernel::LINEAR, double> xs(x);
    const exact::Neighbours<Kernel::LINEAR, double> ys(y);
    const exact::Neighbours<Kernel::LINEAR, double> zs(z);
    const auto voters = exact::weightedSum<Voters<T, false, double>>(
        xs.weights, ys.weights, zs.weights,
        [&](int j, int k) { return [&neighbours, j, k](int i) { return neighbours(i, j, k); }; });
    return elected(voters, [&] {
        return nearestOf(voters.labels, isLowerNearest(x), isLowerNearest(y), isLowerNearest(z));
    });
}

}  // namespace volux::resample::detail
