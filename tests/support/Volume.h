// A volume as its definition has it: elements in a block, and where each voxel is among them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

namespace volux::test {

namespace oracle {
struct Position {
    double x;
    double y;
    double z;
};
}  // namespace oracle

struct Extents {
    unsigned int width;
    unsigned int height;
    unsigned int depth;
};

/// Extents, and the distance in elements between neighbours along each axis.
struct Layout {
    const char* name = "interleaved";
    Extents extents{1, 1, 1};
    unsigned int channels = 1;
    unsigned int strideX = 1;
    unsigned int strideY = 1;
    unsigned int strideZ = 1;
    unsigned int strideC = 1;

    std::size_t element(std::int64_t x, std::int64_t y, std::int64_t z, std::int64_t c) const
    {
        return static_cast<std::size_t>(strideX * x + strideY * y + strideZ * z + strideC * c);
    }

    /// Elements from the first to the last addressed one.
    std::size_t addressed() const
    {
        const auto& [w, h, d] = extents;
        return element(w - 1, h - 1, d - 1, channels - 1) + 1;
    }

    /// The same, but not fewer than there are values.
    std::size_t span() const
    {
        return std::max(addressed(),
                        std::size_t{extents.width} * extents.height * extents.depth * channels);
    }
};

inline std::ostream& operator<<(std::ostream& out, const Layout& l)
{
    return out << l.name << " volume of extents " << l.extents.width << ' ' << l.extents.height
               << ' ' << l.extents.depth << " with " << l.channels << " channels, strides x "
               << l.strideX << " y " << l.strideY << " z " << l.strideZ << " c " << l.strideC;
}

inline Layout interleaved(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"interleaved", {w, h, d}, c, c, w * c, w * h * c, 1};
}

/// One whole volume after the other, a channel each.
inline Layout planar(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"planar", {w, h, d}, c, 1, w, w * h, w * h * d};
}

/// Unused elements after every voxel, row and slice.
inline Layout padded(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    const unsigned int x = c + 2;
    const unsigned int y = x * w + 3;
    return {"padded", {w, h, d}, c, x, y, y * h + 5, 1};
}

/// z varies fastest, the channel last.
inline Layout transposed(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"transposed", {w, h, d}, c, h * d, d, 1, w * h * d};
}

/// The axes in the order z, y, x, with the channels of a voxel side by side.
inline Layout zFastest(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"z-fastest", {w, h, d}, c, c * d * h, c * d, c, 1};
}

/// Neighbouring voxels and channels overlap, so that the last write to an element wins.
inline Layout shared(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"shared", {w, h, d}, c, 1, 2, 1, 2};
}

/// All voxels are one element.
inline Layout collapsed(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"collapsed", {w, h, d}, c, 0, 0, 0, 0};
}

using MakeLayout = Layout (*)(unsigned int, unsigned int, unsigned int, unsigned int);

/// A block of elements, and where in it the volume begins: there is room for guards before and
/// behind the voxels.
template <class T>
struct Volume : Layout {
    std::vector<T> block;
    std::size_t origin = 0;
    oracle::Position spacing{1.0, 1.0, 1.0};

    T& at(std::int64_t x, std::int64_t y, std::int64_t z, std::int64_t c)
    {
        return block.at(origin + element(x, y, z, c));
    }
    const T& at(std::int64_t x, std::int64_t y, std::int64_t z, std::int64_t c) const
    {
        return block.at(origin + element(x, y, z, c));
    }

    bool holds(std::int64_t x, std::int64_t y, std::int64_t z) const
    {
        return 0 <= x && x < extents.width && 0 <= y && y < extents.height && 0 <= z &&
               z < extents.depth;
    }

    /// The element of voxel (0, 0, 0), channel 0.
    T* first() { return block.data() + origin; }
    const T* first() const { return block.data() + origin; }
};

}  // namespace volux::test
