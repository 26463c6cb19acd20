// Trilinear: the eight voxels around a position.
#pragma once

#include "KnownBorder.h"
#include "Neighbourhood.h"

namespace volux::core {

namespace detail {

template <class T, class B>
inline double kernel(Linear&, const VxImage<T>& image, double x, double y, double z, unsigned int c,
                     B& border, T value)
{
    return weighted<exact::Kernel::LINEAR>(image, x, y, z, c, border, value);
}

}  // namespace detail

template <class T, class B>
double Linear::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                          B border, T value) noexcept(detail::byValue<Linear, B>())
{
    return detail::sampleWith(*this, image, x, y, z, c, border, value);
}

}  // namespace volux::core
