// Trilinear: the eight voxels around a position.
#pragma once

#include "../Arithmetic.h"
#include "../Pair.h"
#include "KnownBorder.h"
#include "Neighbourhood.h"

namespace volux::core {

namespace detail {

// The lower neighbour along one axis, and the weights of both.
struct LinearAxis {
    int lower;
    double weights[2];

    explicit LinearAxis(double position) : LinearAxis(position, lowerVoxel(position)) {}

private:
    LinearAxis(double position, int index)
        : lower(index), weights{1.0 - (position - index), position - index}
    {
    }
};

template <class T, class B>
inline double kernel(Linear&, const VxImage<T>& image, double x, double y, double z, unsigned int c,
                     B& border, T value)
{
    const LinearAxis xs(x);
    const LinearAxis ys(y);
    const LinearAxis zs(z);
    const Neighbourhood<2, T, B> around(image, xs.lower, ys.lower, zs.lower, c, border, value);
    // Results are compared bit for bit: products and sums keep this grouping and order.
    const Pair x2(xs.weights[0], xs.weights[1]);
    const Pair rows[2] = {x2 * Pair(ys.weights[0]), x2 * Pair(ys.weights[1])};
    double sum = -0.0;  // not 0.0, which would lose the sign of a first product of -0.0
    for (int k = 0; k < 2; ++k) {
        for (int j = 0; j < 2; ++j) {
            T gathered[2];
            const Pair products =
                widened(around.row(j, k, gathered)) * (rows[j] * Pair(zs.weights[k]));
            sum += products.first();
            sum += products.second();
        }
    }
    return sum;
}

}  // namespace detail

template <class T, class B>
double Linear::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                          B border, T value) noexcept(detail::byValue<Linear, B>())
{
    return detail::sampleWith(*this, image, x, y, z, c, border, value);
}

}  // namespace volux::core
