// A volume as its definition has it, and every whole-volume operation as one plain loop nest: what
// the container is compared with, bit for bit.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "BitExact.h"
#include "ElementTypes.h"
#include "volux/core/VxImage.h"

namespace volux::test {

/// Extents, and the distance in elements between neighbours along each axis.
struct Layout {
    const char* name;
    unsigned int width, height, depth, channels;
    unsigned int strideX, strideY, strideZ, strideC;

    std::size_t element(unsigned int x, unsigned int y, unsigned int z, unsigned int c) const
    {
        return std::size_t{strideX} * x + std::size_t{strideY} * y + std::size_t{strideZ} * z +
               std::size_t{strideC} * c;
    }

    /// Elements from the first to the last addressed one; not fewer than there are values.
    std::size_t span() const
    {
        const std::size_t addressed = element(width - 1, height - 1, depth - 1, channels - 1) + 1;
        return std::max(addressed, std::size_t{width} * height * depth * channels);
    }
};

inline Layout interleaved(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"interleaved", w, h, d, c, c, w * c, w * h * c, 1};
}

/// One whole volume after the other, a channel each.
inline Layout planar(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"planar", w, h, d, c, 1, w, w * h, w * h * d};
}

/// Unused elements after every voxel, row and slice.
inline Layout padded(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    const unsigned int x = c + 2;
    const unsigned int y = x * w + 3;
    return {"padded", w, h, d, c, x, y, y * h + 5, 1};
}

/// z varies fastest, the channel last.
inline Layout transposed(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"transposed", w, h, d, c, h * d, d, 1, w * h * d};
}

/// Neighbouring voxels and channels overlap, so that the last write to an element wins.
inline Layout shared(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"shared", w, h, d, c, 1, 2, 1, 2};
}

/// All voxels are one element.
inline Layout collapsed(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"collapsed", w, h, d, c, 0, 0, 0, 0};
}

using MakeLayout = Layout (*)(unsigned int, unsigned int, unsigned int, unsigned int);
constexpr MakeLayout kLayouts[] = {interleaved, planar, padded, transposed, shared, collapsed};

constexpr std::size_t kGuard = 7;

/// A block of elements with guard values on both sides, and the layout of a volume in it.
template <class T>
struct Volume {
    Layout layout;
    std::vector<T> block;

    T& at(unsigned int x, unsigned int y, unsigned int z, unsigned int c)
    {
        return block[kGuard + layout.element(x, y, z, c)];
    }
    const T& at(unsigned int x, unsigned int y, unsigned int z, unsigned int c) const
    {
        return block[kGuard + layout.element(x, y, z, c)];
    }
};

/// Reproducible values everywhere, the guards included.
template <class T>
Volume<T> someVolume(const Layout& layout, std::uint64_t seed)
{
    Volume<T> volume{layout, std::vector<T>(layout.span() + 2 * kGuard)};
    for (T& element : volume.block)
        element =
            someValue<T>(seed * 1000003 + static_cast<std::uint64_t>(&element - &volume.block[0]));
    return volume;
}

/// An image that wraps the volume's block.
template <class T>
void wrap(Volume<T>& volume, core::VxImage<T>* image)
{
    const Layout& l = volume.layout;
    ASSERT_EQ(core::SUCCESS, image->initializeWithPointer(volume.block.data() + kGuard, l.width,
                                                          l.height, l.depth, l.channels));
    image->setImageStride(l.strideY, l.strideZ, l.strideC, l.strideX);
}

template <class T>
::testing::AssertionResult sameElements(const T* actual, const T* expected, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (!sameBits(actual[i], expected[i]))
            return bitEqual(actual[i], expected[i]) << " at element " << i << " of " << count;
    }
    return ::testing::AssertionSuccess();
}

/// Compares whole blocks, guards and unaddressed elements included.
template <class T>
::testing::AssertionResult sameBlock(const Volume<T>& actual, const Volume<T>& expected)
{
    if (actual.block.size() != expected.block.size())
        return ::testing::AssertionFailure() << "blocks of different sizes";
    return sameElements(actual.block.data(), expected.block.data(), expected.block.size());
}

/// Compares an image that owns an interleaved block with a volume, extents and values.
template <class T>
::testing::AssertionResult holds(const core::VxImage<T>& image, const Volume<T>& expected)
{
    const Layout& l = expected.layout;
    if (image.getWidth() != l.width || image.getHeight() != l.height ||
        image.getDepth() != l.depth || image.getChannels() != l.channels)
        return ::testing::AssertionFailure() << "other extents";
    return sameElements(image.getBufferPointer(), expected.block.data() + kGuard, l.span());
}

/// A zeroed interleaved volume with zeroed guards.
template <class T>
Volume<T> zeroVolume(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    const Layout layout = interleaved(w, h, d, c);
    return {layout, std::vector<T>(layout.span() + 2 * kGuard)};
}

/// Calls visit(x, y, z, c) with z outermost and the channel innermost.
template <class Visit>
void forEachVoxel(const Layout& l, const Visit& visit)
{
    for (unsigned int z = 0; z < l.depth; ++z)
        for (unsigned int y = 0; y < l.height; ++y)
            for (unsigned int x = 0; x < l.width; ++x)
                for (unsigned int c = 0; c < l.channels; ++c)
                    visit(x, y, z, c);
}

/// The box as it must be cropped, its ends already inside the volume.
template <class T>
Volume<T> naiveCrop(const Volume<T>& from, const core::Rect& box)
{
    const unsigned int xEnd = std::min(from.layout.width - 1, box.xEnd);
    const unsigned int yEnd = std::min(from.layout.height - 1, box.yEnd);
    const unsigned int zEnd = std::min(from.layout.depth - 1, box.zEnd);
    auto result = zeroVolume<T>(xEnd - box.xStart + 1, yEnd - box.yStart + 1, zEnd - box.zStart + 1,
                                from.layout.channels);
    forEachVoxel(
        result.layout, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
            result.at(x, y, z, c) = from.at(box.xStart + x, box.yStart + y, box.zStart + z, c);
        });
    return result;
}

template <class T>
void naiveDraw(Volume<T>& to, const Volume<T>& from, unsigned int atX, unsigned int atY,
               unsigned int atZ)
{
    forEachVoxel(from.layout, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
        if (atX + x < to.layout.width && atY + y < to.layout.height && atZ + z < to.layout.depth)
            to.at(atX + x, atY + y, atZ + z, c) = from.at(x, y, z, c);
    });
}

template <class T>
void naiveFill(Volume<T>& volume, T value)
{
    forEachVoxel(volume.layout, [&](unsigned int x, unsigned int y, unsigned int z,
                                    unsigned int c) { volume.at(x, y, z, c) = value; });
}

template <class T>
void naiveFillChannel(Volume<T>& volume, unsigned int channel, T value)
{
    forEachVoxel(volume.layout,
                 [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
                     if (c == channel)
                         volume.at(x, y, z, c) = value;
                 });
}

}  // namespace volux::test
