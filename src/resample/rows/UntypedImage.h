// An image without its type.
#pragma once

#include <cstddef>
#include <cstdint>

#include "volux/core/DataType.h"

namespace volux::resample::detail {

struct UntypedImage {
    core::DataType type;
    std::int64_t elementBytes;
    unsigned char* data;  // of voxel (0, 0, 0)
    unsigned int width;
    unsigned int height;
    unsigned int depth;
    unsigned int channels;
    // In bytes, of either sign.
    std::int64_t strideX;
    std::int64_t strideY;
    std::int64_t strideZ;
    std::int64_t strideC;

    unsigned char* at(std::int64_t x, std::int64_t y, std::int64_t z, std::int64_t c) const
    {
        return data +
               static_cast<std::ptrdiff_t>(strideX * x + strideY * y + strideZ * z + strideC * c);
    }
};

}  // namespace volux::resample::detail
