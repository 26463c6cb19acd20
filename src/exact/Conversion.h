// From the result of a kernel to an element.
#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

#include "Rules.h"
#include "Truncation.h"

namespace volux::exact {

// A sampled value as a T: truncated, then wrapped. Nothing saturates. An integer is one already.
//
// | T                            | by way of | what does not fit, and NaN |
// |------------------------------|-----------|----------------------------|
// | short, int                   | 32 bits   | 0, INT_MIN                 |
// | unsigned char, short and int | 64 bits   | 0                          |
// | float, double                | neither   | infinity; NaN stays        |
template <class T, class Value>
T truncateTo(Value value)
{
    if constexpr (std::is_integral_v<Value>) {
        return value;
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(value);
    } else if constexpr (std::is_signed_v<T>) {
        return static_cast<T>(truncateToInt(value));
    } else {
        return static_cast<T>(truncateToInt64(value));
    }
}

// The same after rounding half away from zero, float and double included.
template <class T, class Value>
T roundTo(Value value)
{
    if constexpr (std::is_integral_v<Value>) {
        return value;
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(std::round(value));
    } else {
        return truncateTo<T>(readyToTruncate(value));
    }
}

// The same for an integer T, except that what T does not hold becomes the nearest value that it
// holds, and NaN becomes 0.
template <class T>
T saturateTo(double value)
{
    using Limits = std::numeric_limits<T>;
    const double raised = readyToTruncate(value);
    if (!(raised > static_cast<double>(Limits::lowest()))) {
        return std::isnan(raised) ? T{0} : Limits::lowest();
    }
    return raised < static_cast<double>(Limits::max()) ? static_cast<T>(raised) : Limits::max();
}

}  // namespace volux::exact
