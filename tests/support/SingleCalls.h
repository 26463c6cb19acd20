// What volux_core gives, one call for each sample, at positions that follow the documented
// rule. Nothing here calls volux_resample; only what its headers say of a map and of options is
// used.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "Names.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Options.h"

namespace volux::test {

using resample::AffineMap;
using resample::Options;
using resample::Overflow;
using resample::Position;

using Interpolators = std::array<Interpolator*, 4>;
using Borders = std::array<Border*, 2>;

// Those of volux_core, and Labels.
inline const Interpolators kInterpolators{&NEAREST_NEIGHBOR, &LINEAR, &CUBIC, &resample::LABELS};
inline const Borders kBorders{&CONSTANT, &REPLICATION};

// Each step is stored, so that no compiler fuses a product and a sum.
inline double stepByStep(const double (&row)[4], double i, double j, double k)
{
    volatile double sum = row[3];
    volatile double product = row[2] * k;
    sum = sum + product;
    product = row[1] * j;
    sum = sum + product;
    product = row[0] * i;
    return sum + product;
}

inline Position positionOf(const AffineMap& map, double i, double j, double k)
{
    return {stepByStep(map.rows[0], i, j, k), stepByStep(map.rows[1], i, j, k),
            stepByStep(map.rows[2], i, j, k)};
}

/// An element by unsigned indices.
template <class T>
T at(const VxImage<T>& image, unsigned int x, unsigned int y, unsigned int z, unsigned int c)
{
    return image(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z),
                 static_cast<int>(c));
}

// volux_core's reading at a position in voxels. The calls by value take voxels whatever the spacing
// is; a policy of the test's own is called through an image whose spacing is 1.
template <class T>
double reading(const VxImage<T>& image, const Position& p, int c, const Options& options)
{
    const auto channel = static_cast<unsigned int>(c);
    const auto value = static_cast<T>(options.outside);
    Border* const border = options.border;
    if (options.interpolator == kInterpolators[0])
        return static_cast<double>(NearestNeighbor()(image, p.x, p.y, p.z, channel, border, value));
    if (options.interpolator == kInterpolators[1])
        return Linear()(image, p.x, p.y, p.z, channel, border, value);
    if (options.interpolator == kInterpolators[2])
        return Cubic()(image, p.x, p.y, p.z, channel, border, value);
    if (options.interpolator == kInterpolators[3])
        return static_cast<double>(
            resample::Labels()(image, p.x, p.y, p.z, channel, border, value));
    return image.getDoubleValueReal(p.x, p.y, p.z, c, options.interpolator, border, value);
}

// Rounded half away from zero, then the nearest value of T.
template <class T>
T saturated(double value)
{
    const double rounded = std::round(value);
    if (std::isnan(rounded))
        return T{0};
    if (rounded <= static_cast<double>(std::numeric_limits<T>::lowest()))
        return std::numeric_limits<T>::lowest();
    if (rounded >= static_cast<double>(std::numeric_limits<T>::max()))
        return std::numeric_limits<T>::max();
    return static_cast<T>(rounded);
}

// What becomes of a reading in a destination of type T; wrapping is volux_core's own rounded form.
template <class T>
T element(const VxImage<T>& image, const Position& p, int c, const Options& options)
{
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(reading(image, p, c, options));
    else if (options.overflow == Overflow::SATURATE)
        return saturated<T>(reading(image, p, c, options));
    else
        return image.getValueVoxel(p.x, p.y, p.z, c, options.interpolator, options.border,
                                   static_cast<T>(options.outside));
}

// Whether a sample of a grid is the value outside, and no call of volux_core: where the edge of
// Replication has ended. A policy of the test's own has no such edge.
template <class T>
bool isOutOfView(const VxImage<T>& image, const Position& p, const Options& options)
{
    const bool isKernel = std::find(kInterpolators.begin(), kInterpolators.end(),
                                    options.interpolator) != kInterpolators.end();
    if (!isKernel || options.border != kBorders[1] || options.edgeExtends)
        return false;
    const auto isInView = [](double x, unsigned int n) { return -0.5 <= x && x < n - 0.5; };
    return !(isInView(p.x, image.getWidth()) && isInView(p.y, image.getHeight()) &&
             isInView(p.z, image.getDepth()));
}

// The reading of a voxel of a grid.
template <class T>
double gridReading(const VxImage<T>& image, const Position& p, int c, const Options& options)
{
    return isOutOfView(image, p, options) ? static_cast<double>(static_cast<T>(options.outside))
                                          : reading(image, p, c, options);
}

// What becomes of it.
template <class T>
T gridElement(const VxImage<T>& image, const Position& p, int c, const Options& options)
{
    return isOutOfView(image, p, options) ? static_cast<T>(options.outside)
                                          : element(image, p, c, options);
}

}  // namespace volux::test
