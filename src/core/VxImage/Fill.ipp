// Fills all channels or one.
#pragma once

#include "ElementCopy.h"
#include "exact/Layout.h"
#include "volux/core/VxImage.h"

namespace volux::core {

namespace detail {

// Copies one value to every voxel: no loop steps along the source.
template <class T>
void fillChannels(const VxImage<T>& image, unsigned int first, unsigned int count, T value)
{
    const Layout<T> to(image);
    const Nest nest{{{image.getDepth(), 0, to.strideZ},
                     {image.getHeight(), 0, to.strideY},
                     {image.getWidth(), 0, to.strideX},
                     {count, 0, to.strideC}}};
    if (!isEmpty(nest)) {
        copyElements(&value, stepped(to.data, to.strideC * first), nest);
    }
}

}  // namespace detail

template <class T>
ErrorType VxImage<T>::fill(T value)
{
    detail::fillChannels(*this, 0, channels, value);
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::fill(unsigned int channel, T value)
{
    if (channel >= channels) {
        return ERR_INVALID_CHANNEL;
    }
    detail::fillChannels(*this, channel, 1, value);
    return SUCCESS;
}

}  // namespace volux::core
