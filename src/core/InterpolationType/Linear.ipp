// Trilinear: the eight voxels around a position.
#pragma once

#include "../Arithmetic.h"
#include "VoxelLookup.h"

namespace volux::core {

namespace detail {

// The two neighbours along one axis and their weights.
struct LinearAxis {
    int lower;
    double weights[2];

    explicit LinearAxis(double position) : lower(lowerVoxel(position))
    {
        const double fraction = position - lower;
        weights[0] = 1.0 - fraction;
        weights[1] = fraction;
    }

    int voxel(int i) const { return wrappingAdd(lower, i); }
};

}  // namespace detail

template <class T, class B>
double Linear::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                          B border, T value) noexcept(detail::byValue<Linear, B>())
{
    const detail::LinearAxis xs(x);
    const detail::LinearAxis ys(y);
    const detail::LinearAxis zs(z);
    // Results are compared bit for bit: products and sums keep this grouping and order.
    const auto corner = [&](int i, int j, int k) {
        const T voxel =
            detail::voxelOrBorder(image, xs.voxel(i), ys.voxel(j), zs.voxel(k), c, border, value);
        return static_cast<double>(voxel) * (xs.weights[i] * ys.weights[j] * zs.weights[k]);
    };
    double sum = corner(0, 0, 0);  // not 0.0, which would lose the sign of -0.0
    for (int n = 1; n < 8; ++n) {  // x varies fastest
        sum += corner(n & 1, (n >> 1) & 1, n >> 2);
    }
    return sum;
}

}  // namespace volux::core
