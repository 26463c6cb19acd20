// From a double to an integer. The values are the same on every processor, also for NaN, infinities
// and what does not fit, where the language leaves them open and processors differ.
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

namespace volux::exact {

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

}  // namespace volux::exact
