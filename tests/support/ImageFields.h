// What an image holds, field by field, whatever its member functions answer.
#pragma once

#include <cstdint>
#include <cstring>
#include <ostream>
#include <type_traits>

#include "BitExact.h"
#include "Names.h"

namespace volux::test {

/// The fields of a VxImage<T> in their order.
template <class T>
struct ImageFields {
    T* buffer = nullptr;
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int depth = 0;
    unsigned int channels = 0;
    std::uint64_t strideX = 0;
    std::uint64_t strideY = 0;
    std::uint64_t strideZ = 0;
    std::uint64_t strideC = 1;
    double voxelSizeX = 1.0;
    double voxelSizeY = 1.0;
    double voxelSizeZ = 1.0;
    std::uint8_t memoryMode = 0;
    std::uint64_t bufferBytes = 0;

    /// Takes the extents and the strides of a dense image with interleaved channels.
    void setInterleaved(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
    {
        width = w;
        height = h;
        depth = d;
        channels = c;
        strideX = c;
        strideY = std::uint64_t{w} * c;
        strideZ = std::uint64_t{w} * h * c;
        strideC = 1;
    }
};

template <class T>
bool operator==(const ImageFields<T>& a, const ImageFields<T>& b)
{
    return a.buffer == b.buffer && a.width == b.width && a.height == b.height &&
           a.depth == b.depth && a.channels == b.channels && a.strideX == b.strideX &&
           a.strideY == b.strideY && a.strideZ == b.strideZ && a.strideC == b.strideC &&
           sameBits(a.voxelSizeX, b.voxelSizeX) && sameBits(a.voxelSizeY, b.voxelSizeY) &&
           sameBits(a.voxelSizeZ, b.voxelSizeZ) && a.memoryMode == b.memoryMode &&
           a.bufferBytes == b.bufferBytes;
}

template <class T>
std::ostream& operator<<(std::ostream& out, const ImageFields<T>& f)
{
    return out << "buffer " << static_cast<const void*>(f.buffer) << ", extents " << f.width << ' '
               << f.height << ' ' << f.depth << ' ' << f.channels << ", strides x " << f.strideX
               << " y " << f.strideY << " z " << f.strideZ << " c " << f.strideC << ", spacing "
               << f.voxelSizeX << ' ' << f.voxelSizeY << ' ' << f.voxelSizeZ << ", mode "
               << +f.memoryMode << ", capacity " << f.bufferBytes;
}

template <class T>
ImageFields<T> fieldsOf(const VxImage<T>& image)
{
    static_assert(std::is_standard_layout_v<VxImage<T>>);
    static_assert(sizeof(ImageFields<T>) == sizeof(VxImage<T>));
    ImageFields<T> fields;
    std::memcpy(static_cast<void*>(&fields), &image, sizeof fields);
    return fields;
}

/// Puts an image into a state that its public interface does not reach.
template <class T>
void overwriteFields(VxImage<T>& image, const ImageFields<T>& fields)
{
    std::memcpy(static_cast<void*>(&image), &fields, sizeof fields);
}

/// Gives an image other extents; the strides and the block stay.
template <class T>
void overwriteExtents(VxImage<T>& image, unsigned int w, unsigned int h, unsigned int d,
                      unsigned int c)
{
    ImageFields<T> fields = fieldsOf(image);
    fields.width = w;
    fields.height = h;
    fields.depth = d;
    fields.channels = c;
    overwriteFields(image, fields);
}

}  // namespace volux::test
