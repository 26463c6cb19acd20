#include "SamplingOracle.h"

namespace volux::test::oracle {

std::int64_t wrapTo32Bits(std::int64_t number)
{
    constexpr std::int64_t modulus = std::int64_t{1} << 32;
    while (number > kIntMax)
        number -= modulus;
    while (number < kIntMin)
        number += modulus;
    return number;
}

std::int64_t truncateToSigned(double value, int bits)
{
    const double limit = std::ldexp(1.0, bits - 1);
    const double whole = value < 0.0 ? std::ceil(value) : std::floor(value);
    const bool fits = whole >= -limit && whole < limit;
    return static_cast<std::int64_t>(fits ? whole : -limit);
}

double roundHalfAwayFromZero(double value)
{
    if (!std::isfinite(value))
        return value;
    const double magnitude = std::fabs(value);
    const double below = std::floor(magnitude);
    const bool up = magnitude - below >= 0.5;  // the difference is exact
    return std::copysign(up ? below + 1.0 : below, value);
}

std::int64_t lowerIndex(double coordinate)
{
    const std::int64_t truncated = truncateToSigned(coordinate, 32);
    return coordinate >= 0.0 ? truncated : wrapTo32Bits(truncated - 1);
}

std::int64_t nearestIndex(double coordinate)
{
    return lowerIndex(coordinate + 0.5);
}

double cubicKernel(double d)
{
    const double d2 = d * d;
    if (d == 0.0)
        return 1.0;
    if (d < 1.0) {
        const double left = 1.0 - d2 * 2.5;
        const double right = (d2 * 1.5) * d;
        return left + right;
    }
    if (d < 2.0) {
        const double left = (d * 8.0 - 4.0) - d2 * 5.0;
        const double right = d2 * d;
        return (left + right) * -0.5;
    }
    return 0.0;
}

std::int64_t clampToEdge(std::int64_t index, std::int64_t extent)
{
    const std::int64_t raised = index < 0 ? 0 : index;
    const std::int64_t limit = extent - 1;
    return limit < raised ? limit : raised;
}

LinearAxis linearAxis(double coordinate)
{
    const std::int64_t base = lowerIndex(coordinate);
    const double fraction = coordinate - static_cast<double>(base);
    return {base, {1.0 - fraction, fraction}};
}

CubicAxis cubicAxis(double coordinate)
{
    const std::int64_t base = lowerIndex(coordinate);
    const std::int64_t first = wrapTo32Bits(base - 1);
    const std::int64_t last = wrapTo32Bits(base + 2);
    CubicAxis axis;
    for (std::int64_t index = first; index <= last; ++index) {
        const double distance = std::fabs(coordinate - static_cast<double>(index));
        axis.neighbours.at(axis.count) = {index, cubicKernel(distance)};
        ++axis.count;
    }
    return axis;
}

float narrowToFloat(double value)
{
    // Half a step above the largest float: from there on, to the nearest means to infinity.
    constexpr double overflow = 0x1.ffffffp127;
    if (std::fabs(value) >= overflow)
        return std::copysign(std::numeric_limits<float>::infinity(), value < 0.0 ? -1.0F : 1.0F);
    return static_cast<float>(value);
}

}  // namespace volux::test::oracle
