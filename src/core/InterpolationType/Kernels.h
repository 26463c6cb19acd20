// The kernels of many reads, and the way to them from the border that a call brings.
#pragma once

#include <type_traits>

#include "RunTime.h"
#include "volux/core/VxImage.h"

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
auto sampleWith(I& interpolator, const VxImage<T>& image, double x, double y, double z,
                unsigned int c, B& border, T value)
{
    if constexpr (std::is_same_v<B, Border*>) {
        return isExactly<Constant>(border) ? interpolator(image, x, y, z, c, Constant(), value)
               : isExactly<Replication>(border)
                   ? interpolator(image, x, y, z, c, Replication(), value)
                   : kernel(interpolator, image, x, y, z, c, border, value);
    } else {
        return kernel(interpolator, image, x, y, z, c, border, value);
    }
}

}  // namespace volux::core::detail
