// One channel of a source, or of a brick of it, without its type: what the loops address.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "exact/Index.h"
#include "exact/Kernel.h"
#include "volux/core/DataType.h"

namespace volux::resample::detail {

using exact::Kernel;
using exact::reach;

// Up to here indices fit 32 bits whatever a kernel adds to them.
constexpr double kNear = 0x1p30;

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
    std::int64_t stride;  // in bytes, of either sign or zero

    bool holds(int index) const
    {
        return exact::isInside(index, static_cast<unsigned int>(extent));
    }
    int clamped(int index) const
    {
        return exact::clamped(index, static_cast<unsigned int>(extent));
    }
    // The nearest index that the brick holds.
    int within(int index) const { return index < first ? first : index > last ? last : index; }
    // From the brick's first voxel to one that the brick holds.
    std::int64_t bytes(int index) const { return stride * (std::int64_t{index} - first); }
    // From the first to the last, whichever is lower in memory.
    std::int64_t span() const { return std::abs(bytes(last)); }
};

struct Channel {
    core::DataType type;
    const unsigned char* data;  // of the brick's first voxel
    Axis x;
    Axis y;
    Axis z;
    std::int64_t span;  // bytes from its lowest voxel to the end of its highest
};

template <class T>
constexpr auto kBytes = static_cast<std::int64_t>(sizeof(T));

// How the voxels of a row follow one another in memory: contiguous in either direction, or not.
enum class Order { FORWARD, BACKWARD, APART };

// Calls `function` with a channel's order, as a type.
template <class T, class Function>
void withOrder(const Channel& channel, const Function& function)
{
    if (channel.x.stride == kBytes<T>) {
        function(std::integral_constant<Order, Order::FORWARD>());
    } else if (channel.x.stride == -kBytes<T>) {
        function(std::integral_constant<Order, Order::BACKWARD>());
    } else {
        function(std::integral_constant<Order, Order::APART>());
    }
}

template <class T>
double elementAt(const unsigned char* bytes)
{
    T element;
    std::memcpy(&element, bytes, sizeof element);
    return static_cast<double>(element);
}

// Vectors read eight bytes at once: of one row, because what is between rows need not be readable,
// and of a source whose bytes a double counts exactly. The first byte must be the lowest.
constexpr std::size_t kWordBytes = sizeof(std::uint64_t);
inline bool haveWords(const Channel& channel, std::int64_t elementBytes)
{
    constexpr bool kLowestFirst = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    return kLowestFirst &&
           channel.x.span() + elementBytes >= static_cast<std::int64_t>(kWordBytes) &&
           channel.span <= std::int64_t{1} << 50U;
}

}  // namespace volux::resample::detail
