// Where an image keeps its elements, for the loops that address many of them.
#pragma once

#include <cstdint>

#include "volux/core/VxImage.h"

namespace volux::core::detail {

// A friend of the image, whose strides no caller sees. In elements, as signed numbers.
template <class T>
struct Layout {
    T* data;
    std::int64_t strideX;
    std::int64_t strideY;
    std::int64_t strideZ;
    std::int64_t strideC;

    explicit Layout(const VxImage<T>& image)
        : data(image.buffer),
          strideX(static_cast<std::int64_t>(image.strideX)),
          strideY(static_cast<std::int64_t>(image.strideY)),
          strideZ(static_cast<std::int64_t>(image.strideZ)),
          strideC(static_cast<std::int64_t>(image.strideC))
    {
    }
};

}  // namespace volux::core::detail
