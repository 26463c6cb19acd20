// One sample at a time: positions far from any image, whose indices wrap in 32 bits, sources that
// no word fits into, and processors without vectors.
#pragma once

#include <limits>

#include "Block.h"
#include "Vote.h"
#include "exact/Rules.h"

namespace volux::resample::detail {

// Where the neighbours along one axis are read: whether a voxel is there, and its distance.
template <Kernel K>
struct AxisReads {
    bool isInside[reach(K)];
    std::int64_t bytes[reach(K)];

    AxisReads(const Axis& axis, const Outside& outside, int first)
    {
        for (int n = 0; n < reach(K); ++n) {
            const int index = exact::wrappingAdd(first, n);
            isInside[n] = !outside.isConstant || axis.holds(index);
            bytes[n] = isInside[n] ? axis.bytes(axis.clamped(index)) : 0;
        }
    }
};

template <class T>
double readNearest(const Channel& channel, const Outside& outside, double x, double y, double z)
{
    constexpr Kernel kNearest = Kernel::NEAREST;
    const int column = exact::firstNeighbour<kNearest>(x);
    const int row = exact::firstNeighbour<kNearest>(y);
    const int slice = exact::firstNeighbour<kNearest>(z);
    const bool isInside = channel.x.holds(column) && channel.y.holds(row) && channel.z.holds(slice);
    if (!isInside && outside.isConstant) {
        return outside.value;
    }
    // Most positions are inside, where nothing is clamped.
    const auto at = [&](const Axis& axis, int index) {
        return axis.bytes(isInside ? index : axis.clamped(index));
    };
    return elementAt<T>(channel.data + at(channel.x, column) + at(channel.y, row) +
                        at(channel.z, slice));
}

// Sees the rows that a reading reads, and does nothing.
struct NoWitness {
    template <int N>
    void add(const double (&)[N], int, int)
    {
    }
};

// `witness` is told of each row of neighbours (j, k).
template <class T, Kernel K, class Witness = NoWitness>
double readWeighted(const Channel& channel, const Outside& outside, double x, double y, double z,
                    Witness&& witness = Witness())
{
    const exact::Place<K> at(x, y, z);
    if constexpr (K == Kernel::CUBIC) {
        if (at.isEmpty()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
    }
    const AxisReads<K> columns(channel.x, outside, at.x.first);
    const AxisReads<K> rows(channel.y, outside, at.y.first);
    const AxisReads<K> slices(channel.z, outside, at.z.first);
    return at.sum([&](int j, int k) {
        const bool isRowInside = slices.isInside[k] && rows.isInside[j];
        const unsigned char* const row = channel.data + slices.bytes[k] + rows.bytes[j];
        const auto voxel = [=, &columns, &outside](int i) {
            return isRowInside && columns.isInside[i] ? elementAt<T>(row + columns.bytes[i])
                                                      : outside.value;
        };
        double voxels[reach(K)];
        for (int i = 0; i < reach(K); ++i) {
            voxels[i] = voxel(i);
        }
        witness.add(voxels, j, k);
        return [voxels](int i) { return exact::Pair(voxels[2 * i], voxels[2 * i + 1]); };
    });
}

template <class T>
double readLabel(const Channel& channel, const Outside& outside, double x, double y, double z)
{
    constexpr Kernel kKernel = Kernel::LINEAR;
    const AxisReads<kKernel> columns(channel.x, outside, exact::firstNeighbour<kKernel>(x));
    const AxisReads<kKernel> rows(channel.y, outside, exact::firstNeighbour<kKernel>(y));
    const AxisReads<kKernel> slices(channel.z, outside, exact::firstNeighbour<kKernel>(z));
    return labelAt<T>(x, y, z, [&](int i, int j, int k) {
        const bool isInside = columns.isInside[i] && rows.isInside[j] && slices.isInside[k];
        return isInside
                   ? elementAt<T>(channel.data + slices.bytes[k] + rows.bytes[j] + columns.bytes[i])
                   : outside.value;
    });
}

// What the kernel gives for one sample, as a double.
template <class T, Kernel K>
double readOne(const Channel& channel, const Outside& outside, double x, double y, double z)
{
    if constexpr (K == Kernel::NEAREST) {
        return readNearest<T>(channel, outside, x, y, z);
    } else {
        return readWeighted<T, K>(channel, outside, x, y, z);
    }
}

template <class T, Kernel K>
void readOneByOne(const Channel& channel, const Outside& outside, Block& block, std::size_t first,
                  std::size_t end)
{
    for (std::size_t n = first; n < end; ++n) {
        block.readings[n] = readOne<T, K>(channel, outside, block.x[n], block.y[n], block.z[n]);
    }
}

template <class T>
void readLabelsOneByOne(const Channel& channel, const Outside& outside, Block& block,
                        std::size_t first, std::size_t end)
{
    for (std::size_t n = first; n < end; ++n) {
        block.readings[n] = readLabel<T>(channel, outside, block.x[n], block.y[n], block.z[n]);
    }
}

}  // namespace volux::resample::detail
