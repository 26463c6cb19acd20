// The kernels: nearest neighbour, trilinear and tricubic (separable cubic convolution, normalised).
#pragma once

#include <type_traits>

#include "Neighbourhood.h"
#include "exact/KnownPolicy.h"
#include "volux/core/InterpolationType.h"

namespace volux::core {

namespace detail {

// What a kernel gives: a voxel as it is, or a weighted sum.
template <class I, class T, class B>
inline auto kernel(I&, const VxImage<T>& image, double x, double y, double z, unsigned int c,
                   B& border, T value)
{
    if constexpr (std::is_same_v<I, NearestNeighbor>) {
        constexpr auto kNearest = exact::Kernel::NEAREST;
        return voxelOrBorder(image, exact::firstNeighbour<kNearest>(x),
                             exact::firstNeighbour<kNearest>(y), exact::firstNeighbour<kNearest>(z),
                             c, border, value);
    } else {
        constexpr bool isLinear = std::is_same_v<I, Linear>;
        constexpr auto kKernel = isLinear ? exact::Kernel::LINEAR : exact::Kernel::CUBIC;
        return weighted<kKernel>(image, x, y, z, c, border, value);
    }
}

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

}  // namespace detail

template <class T, class B>
T NearestNeighbor::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                              B border, T value) noexcept(detail::byValue<NearestNeighbor, B>())
{
    return detail::kernel(*this, image, x, y, z, c, border, value);
}

template <class T, class B>
double Linear::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                          B border, T value) noexcept(detail::byValue<Linear, B>())
{
    return detail::sampleWith(*this, image, x, y, z, c, border, value);
}

template <class T, class B>
double Cubic::operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                         B border, T value) noexcept(detail::byValue<Cubic, B>())
{
    return detail::sampleWith(*this, image, x, y, z, c, border, value);
}

}  // namespace volux::core
