#include "volux/core/Geometry.h"

#include <cstdint>

namespace volux::core {

namespace {

// Computes in 64 bits: the full range has 2^32 voxels, which wrap to 0.
unsigned int rangeLength(unsigned int first, unsigned int last)
{
    if (first > last) {
        return 0;
    }
    return static_cast<unsigned int>(std::uint64_t{last} - first + 1);
}

}  // namespace

ImageSize::ImageSize() : ImageSize(0, 0, 0, 0) {}

ImageSize::ImageSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ, unsigned int sizeC)
    : width(sizeX), height(sizeY), depth(sizeZ), channels(sizeC)
{
}

ImageSize& ImageSize::operator=(const ImageSize& other) = default;
ImageSize& ImageSize::operator=(ImageSize&& other) noexcept = default;

bool ImageSize::operator==(const ImageSize& other) const
{
    return width == other.width && height == other.height && depth == other.depth &&
           channels == other.channels;
}

bool ImageSize::operator!=(const ImageSize& other) const
{
    return !(*this == other);
}

VoxelSize::VoxelSize() : VoxelSize(0.0, 0.0, 0.0) {}

VoxelSize::VoxelSize(double spacingX, double spacingY, double spacingZ)
    : x(spacingX), y(spacingY), z(spacingZ)
{
}

VoxelSize& VoxelSize::operator=(const VoxelSize& other) = default;
VoxelSize& VoxelSize::operator=(VoxelSize&& other) noexcept = default;

bool VoxelSize::operator==(const VoxelSize& other) const
{
    return x == other.x && y == other.y && z == other.z;
}

bool VoxelSize::operator!=(const VoxelSize& other) const
{
    return !(*this == other);
}

Rect::Rect() : Rect(0, 0, 0, 0) {}

Rect::Rect(unsigned int firstX, unsigned int lastX, unsigned int firstY, unsigned int lastY)
    : Rect(firstX, lastX, firstY, lastY, 0, 0)
{
}

Rect::Rect(unsigned int firstX, unsigned int lastX, unsigned int firstY, unsigned int lastY,
           unsigned int firstZ, unsigned int lastZ)
    : xStart(firstX), xEnd(lastX), yStart(firstY), yEnd(lastY), zStart(firstZ), zEnd(lastZ)
{
}

Rect& Rect::operator=(const Rect& other) = default;
Rect& Rect::operator=(Rect&& other) noexcept = default;

unsigned int Rect::width() const
{
    return rangeLength(xStart, xEnd);
}
unsigned int Rect::height() const
{
    return rangeLength(yStart, yEnd);
}
unsigned int Rect::depth() const
{
    return rangeLength(zStart, zEnd);
}

}  // namespace volux::core
