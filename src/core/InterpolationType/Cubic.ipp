// Tricubic: separable cubic convolution over 4 x 4 x 4 voxels, normalised.
#pragma once

#include <cmath>

#include "../Arithmetic.h"
#include "VoxelLookup.h"

namespace volux::core {

namespace detail {

// Keys' kernel for a = -0.5 at a distance d >= 0. Evaluated in exactly this form; the weight of 1
// is -0.0 and that of 2 is 0.0.
inline double cubicWeight(double d)
{
    const double d2 = d * d;
    if (d == 0.0) {
        return 1.0;
    }
    if (d < 1.0) {
        return (1.0 - d2 * 2.5) + (d2 * 1.5) * d;
    }
    if (d < 2.0) {
        return (((d * 8.0 - 4.0) - d2 * 5.0) + d2 * d) * -0.5;
    }
    return 0.0;
}

// The four neighbours along one axis, first to last, and their weights.
struct CubicAxis {
    int first;
    int last;
    double weights[4];

    explicit CubicAxis(double position)
        : first(wrappingAdd(lowerVoxel(position), -1)), last(wrappingAdd(first, 3))
    {
        for (int n = 0; n < 4; ++n) {
            weights[n] = cubicWeight(std::fabs(position - wrappingAdd(first, n)));
        }
    }

    // Near the ends of the 32-bit range the neighbourhood wraps, and then it holds no voxel at all.
    int count() const { return first <= last ? 4 : 0; }
};

}  // namespace detail

template <class T, class B>
double Cubic::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                         B border, T value) noexcept(detail::byValue<Cubic, B>())
{
    const detail::CubicAxis xs(x);
    const detail::CubicAxis ys(y);
    const detail::CubicAxis zs(z);
    double weightSum = 0.0;
    double sum = 0.0;
    // Results are compared bit for bit: products and sums keep this grouping and order.
    for (int k = 0; k < zs.count(); ++k) {
        for (int j = 0; j < ys.count(); ++j) {
            for (int i = 0; i < xs.count(); ++i) {
                const double weight = ys.weights[j] * xs.weights[i] * zs.weights[k];
                const T voxel = detail::voxelOrBorder(image, xs.first + i, ys.first + j,
                                                      zs.first + k, c, border, value);
                weightSum += weight;
                sum += static_cast<double>(voxel) * weight;
            }
        }
    }
    return sum / weightSum;
}

}  // namespace volux::core
