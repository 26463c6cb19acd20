// The rules of the module's kernels, one sample at a time: which voxels a position reads, their
// weights, and the order in which products are added. What runs across samples follows the same
// rules, and hands the positions that it does not take to these functions.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "Voxels.h"

namespace volux::resample::detail {

inline int wrappingAdd(int a, int b)
{
    return static_cast<int>(std::int64_t{a} + b);
}

// Toward zero; NaN and what does not fit give the lowest integer, as the lowest itself does.
template <class Int>
Int truncated(double value)
{
    constexpr Int kLowest = std::numeric_limits<Int>::min();
    return std::abs(value) < -static_cast<double>(kLowest) ? static_cast<Int>(value) : kLowest;
}

// One lower at negative whole numbers, and for NaN.
inline int lowerVoxel(double position)
{
    const int index = truncated<int>(position);
    return position >= 0.0 ? index : wrappingAdd(index, -1);
}

// Keys' kernel for a = -0.5, at distances from 0 to 1 and from 1 to 2.
inline double innerCubicWeight(double d)
{
    const double d2 = d * d;
    return (1.0 - d2 * 2.5) + (d2 * 1.5) * d;
}

inline double outerCubicWeight(double d)
{
    const double d2 = d * d;
    return (((d * 8.0 - 4.0) - d2 * 5.0) + d2 * d) * -0.5;
}

// The neighbours along one axis: the first one's index, and the weight of each.
template <Kernel K>
struct AxisWeights;

template <>
struct AxisWeights<Kernel::NEAREST> {
    int first;
    double weights[1] = {1.0};

    explicit AxisWeights(double position) : first(lowerVoxel(position + 0.5)) {}
};

template <>
struct AxisWeights<Kernel::LINEAR> {
    int first;
    double weights[2];

    explicit AxisWeights(double position) : first(lowerVoxel(position))
    {
        const double fraction = position - first;
        weights[0] = 1.0 - fraction;
        weights[1] = fraction;
    }
};

template <>
struct AxisWeights<Kernel::CUBIC> {
    int first;
    double weights[4];

    explicit AxisWeights(double position) : first(wrappingAdd(lowerVoxel(position), -1))
    {
        weights[0] = outerCubicWeight(position - first);
        weights[1] = innerCubicWeight(position - wrappingAdd(first, 1));
        weights[2] = innerCubicWeight(wrappingAdd(first, 2) - position);
        weights[3] = outerCubicWeight(wrappingAdd(first, 3) - position);
    }

    // Near the ends of the 32-bit range the neighbourhood wraps, and holds no voxel at all.
    bool isEmpty() const { return wrappingAdd(first, 3) < first; }
};

// Where the neighbours along one axis are read: whether a voxel is there, and its distance.
template <Kernel K>
struct AxisReads {
    bool isInside[reach(K)];
    std::int64_t bytes[reach(K)];

    AxisReads(const Axis& axis, const Outside& outside, int first)
    {
        for (int n = 0; n < reach(K); ++n) {
            const int index = wrappingAdd(first, n);
            isInside[n] = !outside.isConstant || axis.holds(index);
            bytes[n] = isInside[n] ? axis.bytes(axis.clamped(index)) : 0;
        }
    }
};

// Whether the nearest voxel to a position, raised by half a voxel, lies inside.
inline bool holdsRaised(const Axis& axis, double raised)
{
    return raised >= 0.0 && raised < axis.extent;
}

// Inside, where most positions are, nothing is clamped or replaced.
template <class T>
bool readNearest(const Voxels& voxels, double x, double y, double z, double& voxel)
{
    x += 0.5;
    y += 0.5;
    z += 0.5;
    if (!(holdsRaised(voxels.x, x) && holdsRaised(voxels.y, y) && holdsRaised(voxels.z, z))) {
        return false;
    }
    voxel = elementAt<T>(voxels.data + voxels.x.bytes(static_cast<int>(x)) +
                         voxels.y.bytes(static_cast<int>(y)) + voxels.z.bytes(static_cast<int>(z)));
    return true;
}

// What the kernel gives for one sample, as a double.
template <class T, Kernel K>
double sampleOne(const Voxels& voxels, const Outside& outside, double x, double y, double z)
{
    constexpr int kReach = reach(K);
    if constexpr (K == Kernel::NEAREST) {
        double voxel;
        if (readNearest<T>(voxels, x, y, z, voxel)) {
            return voxel;
        }
    }
    const AxisWeights<K> xs(x);
    const AxisWeights<K> ys(y);
    const AxisWeights<K> zs(z);
    if constexpr (K == Kernel::CUBIC) {
        if (xs.isEmpty() || ys.isEmpty() || zs.isEmpty()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
    }
    const AxisReads<K> columns(voxels.x, outside, xs.first);
    const AxisReads<K> rows(voxels.y, outside, ys.first);
    const AxisReads<K> slices(voxels.z, outside, zs.first);
    double sumOfWeights = 0.0;
    double sum = K == Kernel::CUBIC ? 0.0 : -0.0;  // -0.0 keeps the sign of a first product
    for (int k = 0; k < kReach; ++k) {
        for (int j = 0; j < kReach; ++j) {
            const bool isRowInside = slices.isInside[k] && rows.isInside[j];
            const unsigned char* const row = voxels.data + slices.bytes[k] + rows.bytes[j];
            for (int i = 0; i < kReach; ++i) {
                const double voxel = isRowInside && columns.isInside[i]
                                         ? elementAt<T>(row + columns.bytes[i])
                                         : outside.value;
                if constexpr (K == Kernel::NEAREST) {
                    return voxel;
                }
                const double weight = (xs.weights[i] * ys.weights[j]) * zs.weights[k];
                sumOfWeights += weight;
                sum += voxel * weight;
            }
        }
    }
    return K == Kernel::CUBIC ? sum / sumOfWeights : sum;
}

}  // namespace volux::resample::detail
