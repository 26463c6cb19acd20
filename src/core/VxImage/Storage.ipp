// Allocates, lays out, copies and frees the storage of an image; sets its spacing.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "../ThrowSites.h"
#include "volux/core/VxImage.h"

namespace volux::core {

namespace detail {

inline std::uint64_t byteCount(const ImageSize& size, std::size_t elementBytes)
{
    return std::uint64_t{size.channels} * size.depth * size.height * size.width * elementBytes;
}

// No allocator can supply what std::size_t cannot hold, on a 32-bit machine.
inline std::size_t allocatable(std::uint64_t bytes)
{
    return static_cast<std::size_t>(
        std::min<std::uint64_t>(bytes, std::numeric_limits<std::size_t>::max()));
}

}  // namespace detail

template <class T>
VxImage<T>::VxImage() = default;

template <class T>
VxImage<T>::VxImage(const VxImage& other)
{
    copyFrom(other, true);
}

template <class T>
VxImage<T>::~VxImage()
{
    terminate();
}

template <class T>
VxImage<T>& VxImage<T>::operator=(const VxImage& other)
{
    freeBuffer();
    copyFrom(other, true);
    return *this;
}

template <class T>
void VxImage<T>::terminate()
{
    freeBuffer();
    buffer = nullptr;  // a caller's block is not freed
    memoryMode = 0;
    width = height = depth = channels = 0;
    strideX = strideY = strideZ = 0;
    strideC = 1;
    voxelSizeX = voxelSizeY = voxelSizeZ = kDefaultVoxelSize;
    bufferBytes = 0;
}

template <class T>
ErrorType VxImage<T>::initialize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                                 unsigned int sizeC)
{
    if (buffer != nullptr) {
        detail::raise(detail::kInitializeTwice);
    }
    return setImageSize(sizeX, sizeY, sizeZ, sizeC);
}

template <class T>
ErrorType VxImage<T>::initialize(const VxImage& other, bool copyData)
{
    if (buffer != nullptr) {
        detail::raise(detail::kInitializeTwiceByCopy);
    }
    return copyFrom(other, copyData);
}

template <class T>
ErrorType VxImage<T>::initializeWithPointer(T* data, unsigned int sizeX, unsigned int sizeY,
                                            unsigned int sizeZ, unsigned int sizeC)
{
    if (buffer != nullptr) {
        detail::raise(detail::kWrapReserved);
    }
    if (data == nullptr) {
        return ERR_NULL_POINTER;
    }
    if (!isValidSize(sizeX, sizeY, sizeZ, sizeC)) {
        return ERR_INVALID_ARGUMENT;
    }
    width = sizeX;
    height = sizeY;
    depth = sizeZ;
    channels = sizeC;
    setDotSequentialStride(sizeX, sizeY, sizeZ, sizeC);
    buffer = data;
    memoryMode = 1;
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::setImageSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                                   unsigned int sizeC)
{
    if (memoryMode == 1) {
        detail::raise(detail::kResizeWrapped);
    }
    if (!isValidSize(sizeX, sizeY, sizeZ, sizeC)) {
        return ERR_INVALID_ARGUMENT;
    }
    width = sizeX;
    height = sizeY;
    depth = sizeZ;
    channels = sizeC;
    setDotSequentialStride(sizeX, sizeY, sizeZ, sizeC);
    const std::uint64_t need = detail::byteCount(getImageSize(), sizeof(T));
    if (bufferBytes >= need) {
        return SUCCESS;
    }
    freeBuffer();  // succeeds, because the image owns the block
    return allocateBuffer(detail::allocatable(need));
}

template <class T>
ErrorType VxImage<T>::setImageSize(const ImageSize& size)
{
    return setImageSize(size.width, size.height, size.depth, size.channels);
}

template <class T>
ErrorType VxImage<T>::setImageData(const void* data, std::size_t bytes)
{
    if (bytes != detail::byteCount(getImageSize(), sizeof(T))) {
        return ERR_INVALID_ARGUMENT;
    }
    if (bytes != 0) {  // otherwise either pointer may be null
        std::memmove(buffer, data, bytes);
    }
    return SUCCESS;
}

template <class T>
void VxImage<T>::setImageStride(unsigned int newStrideY, unsigned int newStrideZ,
                                unsigned int newStrideC, unsigned int newStrideX)
{
    strideY = newStrideY;
    strideZ = newStrideZ;
    strideC = newStrideC;
    strideX = newStrideX;
}

template <class T>
ErrorType VxImage<T>::setVoxelSize(double x, double y, double z)
{
    if (0.0 >= x || 0.0 >= y || 0.0 >= z) {  // false for NaN, which is accepted
        return ERR_INVALID_ARGUMENT;
    }
    voxelSizeX = x;
    voxelSizeY = y;
    voxelSizeZ = z;
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::setVoxelSize(const VoxelSize& size)
{
    return setVoxelSize(size.x, size.y, size.z);
}

template <class T>
ErrorType VxImage<T>::allocateBuffer(std::size_t bytes)
{
    if (memoryMode == 1) {
        return ERR_EXTERNAL_MEMORY;
    }
    buffer = static_cast<T*>(std::calloc(1, bytes));
    if (buffer == nullptr) {
        return ERR_ALLOCATION_FAILED;
    }
    bufferBytes = bytes;
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::freeBuffer()
{
    if (memoryMode == 1) {
        return ERR_EXTERNAL_MEMORY;
    }
    std::free(buffer);
    buffer = nullptr;
    return SUCCESS;
}

template <class T>
ErrorType VxImage<T>::copyFrom(const VxImage& other, bool copyData)
{
    memoryMode = 0;
    width = other.width;
    height = other.height;
    depth = other.depth;
    channels = other.channels;
    strideX = other.strideX;
    strideY = other.strideY;
    strideZ = other.strideZ;
    strideC = other.strideC;
    voxelSizeX = other.voxelSizeX;
    voxelSizeY = other.voxelSizeY;
    voxelSizeZ = other.voxelSizeZ;
    const std::size_t bytes = detail::allocatable(detail::byteCount(getImageSize(), sizeof(T)));
    const ErrorType result = allocateBuffer(bytes);
    // The source may be this very image, so its buffer is read only after the allocation.
    if (result == SUCCESS && copyData && other.buffer != nullptr) {
        std::memmove(buffer, other.buffer, bytes);
    }
    return result;
}

template <class T>
void VxImage<T>::setDotSequentialStride(unsigned int sizeX, unsigned int sizeY, unsigned int,
                                        unsigned int sizeC)
{
    strideX = sizeC;
    strideY = strideX * sizeX;
    strideZ = strideY * sizeY;
    strideC = 1;
}

// Extents from 1 to 2^31 - 1 whose byte count fits 64 bits.
template <class T>
bool VxImage<T>::isValidSize(unsigned int sizeX, unsigned int sizeY, unsigned int sizeZ,
                             unsigned int sizeC)
{
    for (const unsigned int extent : {sizeX, sizeY, sizeZ, sizeC}) {
        if (extent == 0 || extent > 0x7FFFFFFFU) {
            return false;
        }
    }
    constexpr std::uint64_t kMostElements = std::numeric_limits<std::uint64_t>::max() / sizeof(T);
    return kMostElements / sizeC / sizeX / sizeY / sizeZ != 0;
}

}  // namespace volux::core
