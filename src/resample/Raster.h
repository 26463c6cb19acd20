// An image without its type, as its public interface shows it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "Voxels.h"
#include "volux/core/VxImage.h"

namespace volux::resample::detail {

template <class T>
constexpr core::DataType typeOf()
{
    return std::is_same_v<T, short>            ? core::DT_SHORT
           : std::is_same_v<T, int>            ? core::DT_INT
           : std::is_same_v<T, unsigned char>  ? core::DT_UCHAR
           : std::is_same_v<T, unsigned short> ? core::DT_USHORT
           : std::is_same_v<T, unsigned int>   ? core::DT_UINT
           : std::is_same_v<T, float>          ? core::DT_FLOAT
                                               : core::DT_DOUBLE;
}

struct Raster {
    core::DataType type;
    std::int64_t elementBytes;
    unsigned char* data;
    unsigned int width;
    unsigned int height;
    unsigned int depth;
    unsigned int channels;
    // In bytes; of an extent of 1 any stride would do.
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

// The strides of an image are private; the addresses of its elements are not.
template <class T>
std::int64_t strideOf(const core::VxImage<T>& image, unsigned int extent, int x, int y, int z,
                      int c)
{
    if (extent < 2) {
        return sizeof(T);
    }
    const auto address = [](const T& element) { return reinterpret_cast<std::intptr_t>(&element); };
    return address(image(x, y, z, c)) - address(image(0, 0, 0, 0));
}

template <class T>
Raster rasterOf(const core::VxImage<T>& image)
{
    Raster raster = {typeOf<T>(),
                     sizeof(T),
                     reinterpret_cast<unsigned char*>(image.getBufferPointer()),
                     image.getWidth(),
                     image.getHeight(),
                     image.getDepth(),
                     image.getChannels(),
                     sizeof(T),
                     sizeof(T),
                     sizeof(T),
                     sizeof(T)};
    if (raster.data != nullptr) {  // then no extent is 0 or beyond an int
        raster.strideX = strideOf(image, raster.width, 1, 0, 0, 0);
        raster.strideY = strideOf(image, raster.height, 0, 1, 0, 0);
        raster.strideZ = strideOf(image, raster.depth, 0, 0, 1, 0);
        raster.strideC = strideOf(image, raster.channels, 0, 0, 0, 1);
    }
    return raster;
}

// One axis of an image that is a brick of a source of `extent` voxels, beginning with `first`.
inline Axis axisOf(unsigned int extent, unsigned int first, unsigned int held, std::int64_t stride)
{
    return {static_cast<int>(extent), static_cast<int>(first), static_cast<int>(first + held - 1),
            stride};
}

}  // namespace volux::resample::detail
