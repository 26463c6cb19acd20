// The sampling call that the bench looks at, for each element type.
#pragma once

#include "counts/Positions.h"

namespace volux::bench {

// The rounded form for the integers; for the others, where it gives whole numbers, the plain one.
template <class I, class B>
double sampled(const core::VxImage<short>& image, const Position& at, I interpolator, B border)
{
    return image.getValueVoxel<I, B>(at.x, at.y, at.z, 0, interpolator, border, 7);
}

template <class I, class B>
double sampled(const core::VxImage<float>& image, const Position& at, I interpolator, B border)
{
    return image.getDoubleValueReal<I, B>(at.x, at.y, at.z, 0, interpolator, border, 7);
}

}  // namespace volux::bench
