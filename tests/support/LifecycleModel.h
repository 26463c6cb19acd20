// The three states of an image as they are defined: what every call returns or throws, what it asks
// of the heap and gives back, and what it leaves behind.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "ImageAccess.h"
#include "ImageFields.h"
#include "ImageStates.h"
#include "Names.h"
#include "ThrowTexts.h"

namespace volux::test {

/// A heap that refuses when it is told to, and always beyond a limit.
struct ModelHeap {
    bool refuses = false;
    std::uint64_t mostBytes = ~std::uint64_t{0};

    bool gives(std::uint64_t bytes) const { return !refuses && bytes <= mostBytes; }
};

/// What a call does besides changing the image: a code or the text that is thrown, the request to
/// the heap (no call makes two) and the block given back.
struct Effect {
    ErrorType code = SUCCESS;
    const char* thrown = nullptr;
    bool requests = false;
    std::uint64_t requestedBytes = 0;
    bool frees = false;
};

inline Effect returning(ErrorType code)
{
    Effect effect;
    effect.code = code;
    return effect;
}

inline Effect throwing(const char* text)
{
    Effect effect;
    effect.thrown = text;
    return effect;
}

__extension__ typedef unsigned __int128 WideNumber;

/// Extents from 1 to 2^31 - 1 whose byte count fits 64 bits.
inline bool validSize(const ImageSize& size, std::size_t elementBytes)
{
    constexpr WideNumber kMost = ~std::uint64_t{0};
    WideNumber bytes = elementBytes;
    for (const unsigned int extent : {size.width, size.height, size.depth, size.channels}) {
        if (extent < 1 || extent > 2147483647)
            return false;
        bytes *= extent;
        if (bytes > kMost)
            return false;
    }
    return true;
}

template <class T>
class ModelImage {
public:
    /// The elements of a block; those of a wrapped one are shared with whoever owns it.
    using Values = std::shared_ptr<std::vector<T>>;

    /// What the image's fields must be; the address of an owned block is not modelled.
    const ImageFields<T>& fields() const { return fields_; }
    const Values& values() const { return values_; }
    bool reserved() const { return values_ != nullptr; }
    bool wraps() const { return fields_.memoryMode == 1; }

    std::uint64_t sizeBytes() const
    {
        return std::uint64_t{fields_.width} * fields_.height * fields_.depth * fields_.channels *
               sizeof(T);
    }

    Effect initialize(const ImageSize& size, const ModelHeap& heap)
    {
        return reserved() ? throwing(kInitializeTwice) : setImageSize(size, heap);
    }

    Effect initialize(const ModelImage& other, bool copyData, const ModelHeap& heap)
    {
        return reserved() ? throwing(kCopyIntoReserved) : copyFrom(other, copyData, heap);
    }

    Effect initializeWithPointer(T* data, const Values& block, const ImageSize& size)
    {
        if (reserved())
            return throwing(kWrapIntoReserved);
        if (data == nullptr)
            return returning(ERR_NULL_POINTER);
        if (!validSize(size, sizeof(T)))
            return returning(ERR_INVALID_ARGUMENT);
        fields_.setInterleaved(size.width, size.height, size.depth, size.channels);
        fields_.buffer = data;
        fields_.memoryMode = 1;
        values_ = block;
        return {};
    }

    Effect setImageSize(const ImageSize& size, const ModelHeap& heap)
    {
        if (wraps())
            return throwing(kResizeWrapping);
        if (!validSize(size, sizeof(T)))
            return returning(ERR_INVALID_ARGUMENT);
        fields_.setInterleaved(size.width, size.height, size.depth, size.channels);
        if (fields_.bufferBytes >= sizeBytes())
            return {};
        const bool frees = release();
        return allocate(frees, heap);
    }

    /// Whether setImageData() with this count is defined: it copies to a block that is there.
    bool takesData(std::uint64_t bytes) const
    {
        return bytes == 0 || bytes != sizeBytes() || reserved();
    }

    Effect setImageData(const T* data, std::uint64_t bytes)
    {
        if (bytes != sizeBytes())
            return returning(ERR_INVALID_ARGUMENT);
        if (bytes != 0)
            std::copy_n(data, bytes / sizeof(T), values_->begin());
        return {};
    }

    void setImageStride(unsigned int y, unsigned int z, unsigned int c, unsigned int x)
    {
        fields_.strideY = y;
        fields_.strideZ = z;
        fields_.strideC = c;
        fields_.strideX = x;
    }

    Effect setVoxelSize(double x, double y, double z)
    {
        if (x <= 0.0 || y <= 0.0 || z <= 0.0)
            return returning(ERR_INVALID_ARGUMENT);
        fields_.voxelSizeX = x;
        fields_.voxelSizeY = y;
        fields_.voxelSizeZ = z;
        return {};
    }

    /// Also destruction.
    Effect terminate()
    {
        Effect effect;
        effect.frees = release();
        fields_ = {};
        return effect;
    }

    /// Codes are discarded: an image whose copy failed has the geometry and no block.
    Effect constructFrom(const ModelImage& other, const ModelHeap& heap)
    {
        *this = {};
        return silent(copyFrom(other, true, heap));
    }

    Effect assign(const ModelImage& other, const ModelHeap& heap)
    {
        const bool frees = release();
        Effect effect = silent(copyFrom(other, true, heap));
        effect.frees = frees;
        return effect;
    }

private:
    static Effect silent(Effect effect)
    {
        effect.code = SUCCESS;
        return effect;
    }

    /// Lets go of the block; true if it goes back to the heap.
    bool release()
    {
        const bool owned = reserved() && !wraps();
        values_ = nullptr;
        fields_.buffer = nullptr;
        return owned;
    }

    Effect allocate(bool frees, const ModelHeap& heap)
    {
        const std::uint64_t bytes = sizeBytes();
        Effect effect{SUCCESS, nullptr, true, bytes, frees};
        if (heap.gives(bytes)) {
            values_ = std::make_shared<std::vector<T>>(bytes / sizeof(T));
            fields_.bufferBytes = bytes;
        } else {
            effect.code = ERR_ALLOCATION_FAILED;
        }
        return effect;
    }

    /// The source is read after the allocation: copied from itself, an image reads 0.
    Effect copyFrom(const ModelImage& other, bool copyData, const ModelHeap& heap)
    {
        const std::uint64_t capacity = fields_.bufferBytes;
        fields_ = other.fields_;
        fields_.buffer = nullptr;
        fields_.memoryMode = 0;
        fields_.bufferBytes = capacity;
        values_ = nullptr;
        const Effect effect = allocate(false, heap);
        if (reserved() && copyData && other.reserved() && &other != this)
            std::copy_n(other.values_->begin(), values_->size(), values_->begin());
        return effect;
    }

    ImageFields<T> fields_;
    Values values_;
};

/// The model's fields with the address that an owned block happens to have.
template <class T>
ImageFields<T> expectedFields(const VxImage<T>& image, const ModelImage<T>& model)
{
    ImageFields<T> expected = model.fields();
    if (model.reserved() && !model.wraps())
        expected.buffer = image.getBufferPointer();
    return expected;
}

template <class T>
bool agrees(const VxImage<T>& image, const ModelImage<T>& model)
{
    const T* const elements = image.getBufferPointer();
    if (model.reserved() != (elements != nullptr))
        return false;
    if (!(fieldsOf(image) == expectedFields(image, model)))
        return false;
    return !model.reserved() || model.values()->empty() ||
           std::memcmp(elements, model.values()->data(), model.values()->size() * sizeof(T)) == 0;
}

}  // namespace volux::test
