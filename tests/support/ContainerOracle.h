// A volume as its definition has it, and every whole-volume operation as one plain loop nest: what
// the container is compared with, bit for bit.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "BitExact.h"
#include "ElementTypes.h"
#include "WrappedVolume.h"

namespace volux::test {

constexpr MakeLayout kLayouts[] = {interleaved, planar, padded, transposed, shared, collapsed};

constexpr std::size_t kGuard = 7;

/// Reproducible values everywhere, the guards included.
template <class T>
Volume<T> someVolume(const Layout& layout, std::uint64_t seed)
{
    Volume<T> volume{layout, std::vector<T>(layout.span() + 2 * kGuard), kGuard};
    for (T& element : volume.block)
        element =
            someValue<T>(seed * 1000003 + static_cast<std::uint64_t>(&element - &volume.block[0]));
    return volume;
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

/// Calls visit(x, y, z, c) with z outermost and the channel innermost.
template <class Visit>
void forEachVoxel(const Layout& l, const Visit& visit)
{
    for (unsigned int z = 0; z < l.extents.depth; ++z)
        for (unsigned int y = 0; y < l.extents.height; ++y)
            for (unsigned int x = 0; x < l.extents.width; ++x)
                for (unsigned int c = 0; c < l.channels; ++c)
                    visit(x, y, z, c);
}

/// "voxel 1 2 0 channel 1 of a planar volume ...", or where no voxel is.
inline std::string placeOf(const Layout& l, std::size_t element)
{
    std::ostringstream text;
    forEachVoxel(l, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
        if (text.tellp() == 0 && l.element(x, y, z, c) == element)
            text << "voxel " << x << ' ' << y << ' ' << z << " channel " << c;
    });
    if (text.tellp() == 0)
        text << "no voxel";
    text << " of a " << l;
    return text.str();
}

/// Compares whole blocks, guards and unaddressed elements included.
template <class T>
::testing::AssertionResult sameBlock(const Volume<T>& actual, const Volume<T>& expected)
{
    if (actual.block.size() != expected.block.size())
        return ::testing::AssertionFailure() << "blocks of different sizes";
    for (std::size_t i = 0; i < actual.block.size(); ++i) {
        if (!sameBits(actual.block[i], expected.block[i]))
            return bitEqual(actual.block[i], expected.block[i])
                   << " at element " << i << ", " << placeOf(expected, i - expected.origin);
    }
    return ::testing::AssertionSuccess();
}

/// Compares an image that owns an interleaved block with a volume, extents and values.
template <class T>
::testing::AssertionResult holds(const VxImage<T>& image, const Volume<T>& expected)
{
    const auto& [w, h, d] = expected.extents;
    if (image.getWidth() != w || image.getHeight() != h || image.getDepth() != d ||
        image.getChannels() != expected.channels)
        return ::testing::AssertionFailure() << "other extents than those of a " << expected;
    return sameElements(image.getBufferPointer(), expected.first(), expected.span());
}

/// The box as it must be cropped, its ends already inside the volume.
template <class T>
Volume<T> naiveCrop(const Volume<T>& from, const Rect& box)
{
    const unsigned int xEnd = std::min(from.extents.width - 1, box.xEnd);
    const unsigned int yEnd = std::min(from.extents.height - 1, box.yEnd);
    const unsigned int zEnd = std::min(from.extents.depth - 1, box.zEnd);
    auto result = blankVolume<T>(
        {xEnd - box.xStart + 1, yEnd - box.yStart + 1, zEnd - box.zStart + 1}, from.channels);
    forEachVoxel(result, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
        result.at(x, y, z, c) = from.at(box.xStart + x, box.yStart + y, box.zStart + z, c);
    });
    return result;
}

template <class T>
void naiveDraw(Volume<T>& to, const Volume<T>& from, unsigned int atX, unsigned int atY,
               unsigned int atZ)
{
    forEachVoxel(from, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
        if (atX + x < to.extents.width && atY + y < to.extents.height && atZ + z < to.extents.depth)
            to.at(atX + x, atY + y, atZ + z, c) = from.at(x, y, z, c);
    });
}

template <class T>
void naiveFill(Volume<T>& volume, T value)
{
    forEachVoxel(volume, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
        volume.at(x, y, z, c) = value;
    });
}

template <class T>
void naiveFillChannel(Volume<T>& volume, unsigned int channel, T value)
{
    forEachVoxel(volume, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
        if (c == channel)
            volume.at(x, y, z, c) = value;
    });
}

}  // namespace volux::test
