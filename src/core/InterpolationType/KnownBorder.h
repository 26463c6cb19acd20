// From the address of a border to the kernel made for it.
#pragma once

#include <type_traits>

#include "../../exact/KnownPolicy.h"
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/InterpolationType.h"

namespace volux::core::detail {

template <class T, class B>
double kernel(Linear& interpolator, const VxImage<T>& image, double x, double y, double z,
              unsigned int c, B& border, T value);

template <class T, class B>
double kernel(Cubic& interpolator, const VxImage<T>& image, double x, double y, double z,
              unsigned int c, B& border, T value);

// One of the library's own borders needs no table, also when it comes by its address: the kernel
// made for it gives the same bits and need not leave the choice open at every read.
template <class I, class T, class B>
double sampleWith(I& interpolator, const VxImage<T>& image, double x, double y, double z,
                  unsigned int c, B& border, T value)
{
    if constexpr (std::is_same_v<B, Border*>) {
        if (exact::isExactly<Constant>(border)) {
            return interpolator(image, x, y, z, c, Constant(), value);
        }
        if (exact::isExactly<Replication>(border)) {
            return interpolator(image, x, y, z, c, Replication(), value);
        }
    }
    return kernel(interpolator, image, x, y, z, c, border, value);
}

}  // namespace volux::core::detail
