// The conversions of a double, each rule once. The values are the same on every processor, also for
// NaN, infinities and what does not fit, where the language leaves them open and processors differ.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "Processor.h"

// g++ 11 and clang tell of fewer of these; the build files look at the flags themselves as well.
#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) || \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(__NO_SIGNED_ZEROS__)
#error "volux_core promises every result to the last bit; -ffast-math and its like change them."
#endif
#if FLT_EVAL_METHOD < 0 || FLT_EVAL_METHOD == 2
#error "volux_core promises every result to the last bit; x87 changes them: -msse2 -mfpmath=sse."
#endif

namespace volux::core::detail {

// Wraps, as two's complement does: the sum fits 64 bits, and its low 32 are kept.
constexpr int wrappingAdd(int a, int b)
{
    return static_cast<int>(std::int64_t{a} + b);
}

// Truncates toward zero; NaN and what does not fit give the lowest integer.
template <class Int>
Int truncateInRange(double value)
{
    constexpr double kLowest = std::numeric_limits<Int>::min();
    // In 64 bits kLowest - 1.0 rounds to kLowest, hence the comparison for equality.
    const bool fits = value < -kLowest && (value > kLowest - 1.0 || value == kLowest);
    return fits ? static_cast<Int>(value) : std::numeric_limits<Int>::min();
}

inline int truncateToInt(double value)
{
#ifdef VOLUX_CORE_SSE2
    return _mm_cvttsd_si32(_mm_set_sd(value));  // the same lowest integer, from the processor
#else
    return truncateInRange<int>(value);
#endif
}

inline std::int64_t truncateToInt64(double value)
{
#if defined(VOLUX_CORE_SSE2) && defined(__x86_64__)
    return _mm_cvttsd_si64(_mm_set_sd(value));
#else
    return truncateInRange<std::int64_t>(value);
#endif
}

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
        // Rounding to nearest, truncating after this addition is std::round for every double,
        // without a call. The addend is the largest number below one half: one half itself would
        // take 0.49999999999999994 up.
        return truncateTo<T>(value + std::copysign(0.49999999999999994, value));
    }
}

// The voxel at or below a position; one lower still at negative whole numbers. The test is >= 0.0,
// not < 0.0, so that NaN steps down too.
inline int lowerVoxel(double position)
{
    return wrappingAdd(truncateToInt(position), -static_cast<int>(!(position >= 0.0)));
}

}  // namespace volux::core::detail
