// One channel of a source, or of a brick of it, without its type: what the loops address.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "volux/core/VxImage.h"

namespace volux::resample::detail {

enum class Kernel { NEAREST, LINEAR, CUBIC };

// Neighbours along one axis.
constexpr int reach(Kernel kernel)
{
    return kernel == Kernel::NEAREST ? 1 : kernel == Kernel::LINEAR ? 2 : 4;
}

// Outside the source: the nearest voxel of its edge, or a value, which a double holds exactly.
struct Outside {
    bool isConstant;
    double value;
};

// Along one axis, in whole-source coordinates: which indices exist, and which of them the brick
// holds. A whole source is its own brick.
struct Axis {
    int extent;
    int first;
    int last;
    std::int64_t stride;  // in bytes

    bool holds(int index) const
    {
        return static_cast<unsigned int>(index) < static_cast<unsigned int>(extent);
    }
    int clamped(int index) const
    {
        const int lowest = index < 0 ? 0 : index;
        return extent - 1 < lowest ? extent - 1 : lowest;
    }
    // Of an index that the brick holds, from the brick's first.
    std::int64_t bytes(int index) const { return stride * (std::int64_t{index} - first); }
    std::int64_t span() const { return stride * (std::int64_t{last} - first); }
};

struct Voxels {
    core::DataType type;
    const unsigned char* data;  // of the brick's first voxel
    Axis x;
    Axis y;
    Axis z;
    std::int64_t span;  // bytes from there to the end of the last voxel
};

template <class T>
double elementAt(const unsigned char* bytes)
{
    T element;
    std::memcpy(&element, bytes, sizeof element);
    return static_cast<double>(element);
}

}  // namespace volux::resample::detail
