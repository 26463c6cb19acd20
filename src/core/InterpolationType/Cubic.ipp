// Tricubic: separable cubic convolution over 4 x 4 x 4 voxels, normalised.
#pragma once

#include "KnownBorder.h"
#include "Neighbourhood.h"

namespace volux::core {

namespace detail {

template <class T, class B>
double kernel(Cubic&, const VxImage<T>& image, double x, double y, double z, unsigned int c,
              B& border, T value)
{
    return weighted<exact::Kernel::CUBIC>(image, x, y, z, c, border, value);
}

}  // namespace detail

template <class T, class B>
double Cubic::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                         B border, T value) noexcept(detail::byValue<Cubic, B>())
{
    return detail::sampleWith(*this, image, x, y, z, c, border, value);
}

}  // namespace volux::core
