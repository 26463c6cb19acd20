// Indices of voxels: how they wrap, which are inside, and where clamping leads.
#pragma once

#include <cstdint>

#include "volux/core/InterpolationBorderType.h"

namespace volux::exact {

using core::detail::clamped;

// Wraps, as two's complement does: the sum fits 64 bits, and its low 32 are kept.
constexpr int wrappingAdd(int a, int b)
{
    return static_cast<int>(std::int64_t{a} + b);
}

// A negative index is huge as an unsigned number and fails the same comparison.
constexpr bool isInside(int index, unsigned int extent)
{
    return static_cast<unsigned int>(index) < extent;
}

}  // namespace volux::exact
