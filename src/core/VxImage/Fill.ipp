// Fill, whole and per channel.
#pragma once

#include "volux/core/VxImage.h"

namespace volux::core {

namespace detail {

// Calls visit(x, y, z) for every voxel, z outermost.
template <class T, class Visit>
void forEachVoxel(const VxImage<T>& image, Visit visit)
{
    for (unsigned int z = 0; z < image.getDepth(); ++z) {
        for (unsigned int y = 0; y < image.getHeight(); ++y) {
            for (unsigned int x = 0; x < image.getWidth(); ++x) {
                visit(static_cast<int>(x), static_cast<int>(y), static_cast<int>(z));
            }
        }
    }
}

}  // namespace detail

template <class T>
ErrorType VxImage<T>::fill(T value)
{
    detail::forEachVoxel(*this, [&](int x, int y, int z) {
        for (unsigned int c = 0; c < channels; ++c) {
            (*this)(x, y, z, static_cast<int>(c)) = value;
        }
    });
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::fill(unsigned int channel, T value)
{
    if (channel >= channels) {
        return ERR_INVALID_CHANNEL;
    }
    detail::forEachVoxel(
        *this, [&](int x, int y, int z) { (*this)(x, y, z, static_cast<int>(channel)) = value; });
    return SUCCESS;
}

}  // namespace volux::core
