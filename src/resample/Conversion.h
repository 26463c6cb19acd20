// A reading as an element, one at a time.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "Exact.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// The largest number below one half: added with the sign of a number that is then truncated, it
// rounds half away from zero for every double; one half itself would take it up.
constexpr double kAlmostHalf = 0.49999999999999994;

// The nearest value that T holds; NaN gives 0.
template <class T>
T saturated(double rounded)
{
    using Limits = std::numeric_limits<T>;
    if (!(rounded > static_cast<double>(Limits::lowest()))) {
        return std::isnan(rounded) ? T{0} : Limits::lowest();
    }
    return rounded < static_cast<double>(Limits::max()) ? static_cast<T>(rounded) : Limits::max();
}

// By way of 32 bits for the signed types and of 64 for the others; what does not fit there gives
// the lowest of those.
template <class T>
T wrapped(double rounded)
{
    if constexpr (std::is_signed_v<T>) {
        return static_cast<T>(truncated<int>(rounded));
    } else {
        return static_cast<T>(truncated<std::int64_t>(rounded));
    }
}

template <class T>
T elementOf(double reading, Overflow overflow)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(reading);
    } else {
        const double rounded = reading + std::copysign(kAlmostHalf, reading);
        return overflow == Overflow::SATURATE ? saturated<T>(rounded) : wrapped<T>(rounded);
    }
}

}  // namespace volux::resample::detail
