// An image without its type.
#pragma once

#include <cstddef>
#include <cstdint>

#include "exact/Layout.h"
#include "volux/core/DataType.h"

namespace volux::resample::detail {

struct UntypedImage {
    core::DataType type;
    std::int64_t elementBytes;
    unsigned char* data;
    unsigned int width;
    unsigned int height;
    unsigned int depth;
    unsigned int channels;
    // In bytes.
    std::int64_t strideX;
    std::int64_t strideY;
    std::int64_t strideZ;
    std::int64_t strideC;

    unsigned char* at(std::int64_t x, std::int64_t y, std::int64_t z, std::int64_t c) const
    {
        return data +
               static_cast<std::ptrdiff_t>(strideX * x + strideY * y + strideZ * z + strideC * c);
    }

    // Behind the last element.
    const unsigned char* end() const
    {
        return at(width - std::int64_t{1}, height - std::int64_t{1}, depth - std::int64_t{1},
                  channels - std::int64_t{1}) +
               elementBytes;
    }
};

template <class T>
UntypedImage untyped(const core::VxImage<T>& image)
{
    constexpr std::uint64_t kBytes = sizeof(T);
    // Wraps for an image whose allocation has failed, whose strides nobody uses.
    const auto bytes = [](std::int64_t stride) {
        return static_cast<std::int64_t>(kBytes * static_cast<std::uint64_t>(stride));
    };
    const core::detail::Layout<T> layout(image);
    return {core::detail::tagOf<T>(),
            sizeof(T),
            reinterpret_cast<unsigned char*>(layout.data),
            image.getWidth(),
            image.getHeight(),
            image.getDepth(),
            image.getChannels(),
            bytes(layout.strideX),
            bytes(layout.strideY),
            bytes(layout.strideZ),
            bytes(layout.strideC)};
}

}  // namespace volux::resample::detail
