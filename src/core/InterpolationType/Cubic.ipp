// Tricubic: separable cubic convolution over 4 x 4 x 4 voxels, normalised.
#pragma once

#include <limits>

#include "../Arithmetic.h"
#include "../Pair.h"
#include "KnownBorder.h"
#include "Neighbourhood.h"

namespace volux::core {

namespace detail {

// Keys' kernel for a = -0.5, of two distances at a time: from 0 to 1, and from 1 to 2. Evaluated in
// exactly these forms. A weight of zero may have either sign: no sum that begins at 0.0 can tell.
inline Pair innerCubicWeights(Pair d)
{
    const Pair d2 = d * d;
    return (Pair(1.0) - d2 * Pair(2.5)) + (d2 * Pair(1.5)) * d;
}

inline Pair outerCubicWeights(Pair d)
{
    const Pair d2 = d * d;
    return (((d * Pair(8.0) - Pair(4.0)) - d2 * Pair(5.0)) + d2 * d) * Pair(-0.5);
}

// The four neighbours along one axis, first to last, and their weights.
struct CubicAxis {
    int first;
    Pair lower;  // weights of the first two
    Pair upper;

    explicit CubicAxis(double position) : CubicAxis(position, wrappingAdd(lowerVoxel(position), -1))
    {
    }

    // Near the ends of the 32-bit range the neighbourhood wraps, and then it holds no voxel at all.
    bool isEmpty() const { return wrappingAdd(first, 3) < first; }

private:
    CubicAxis(double position, int index)
        : CubicAxis(index,
                    innerCubicWeights(
                        Pair(position - wrappingAdd(index, 1), wrappingAdd(index, 2) - position)),
                    outerCubicWeights(Pair(position - index, wrappingAdd(index, 3) - position)))
    {
    }

    CubicAxis(int index, Pair inner, Pair outer)
        : first(index), lower(firsts(outer, inner)), upper(seconds(inner, outer))
    {
    }
};

template <class T, class B>
double kernel(Cubic&, const VxImage<T>& image, double x, double y, double z, unsigned int c,
              B& border, T value)
{
    const CubicAxis xs(x);
    const CubicAxis ys(y);
    const CubicAxis zs(z);
    if (xs.isEmpty() || ys.isEmpty() || zs.isEmpty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const Neighbourhood<4, T, B> around(image, xs.first, ys.first, zs.first, c, border, value);
    const double yWeights[4] = {ys.lower.first(), ys.lower.second(), ys.upper.first(),
                                ys.upper.second()};
    const double zWeights[4] = {zs.lower.first(), zs.lower.second(), zs.upper.first(),
                                zs.upper.second()};
    Pair sums(0.0);  // of the weights, and of the weighted voxels
    // Results are compared bit for bit: products and sums keep this grouping and order.
    for (int k = 0; k < 4; ++k) {
        for (int j = 0; j < 4; ++j) {
            T gathered[4];
            const T* const row = around.row(j, k, gathered);
            for (int i = 0; i < 4; i += 2) {
                const Pair weights =
                    (Pair(yWeights[j]) * (i == 0 ? xs.lower : xs.upper)) * Pair(zWeights[k]);
                const Pair products = widened(row + i) * weights;
                sums = sums + firsts(weights, products);
                sums = sums + seconds(weights, products);
            }
        }
    }
    return sums.second() / sums.first();
}

}  // namespace detail

template <class T, class B>
double Cubic::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                         B border, T value) noexcept(detail::byValue<Cubic, B>())
{
    return detail::sampleWith(*this, image, x, y, z, c, border, value);
}

}  // namespace volux::core
