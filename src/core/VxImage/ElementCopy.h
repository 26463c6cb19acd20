// Copies elements in the order of a nest of loops. The order decides the result where elements are
// shared or memory overlaps, so a faster way is taken only where its result is the same.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "Nest.h"
#include "Transposition.h"
#include "exact/Layout.h"
#include "exact/Processor.h"

namespace volux::core::detail {

// As fast as std::memset, which knows only bytes: the block that is copied on stays in the nearest
// cache.
template <class T>
void fillRun(T* dst, T value, std::int64_t count)
{
    constexpr std::int64_t kBlock = 16384 / sizeof(T);
    std::fill_n(dst, std::min(count, kBlock), value);
    for (std::int64_t done = kBlock; done < count; done += kBlock) {
        std::copy_n(dst, std::min(count - done, kBlock), stepped(dst, done));
    }
}

// Whether a forward copy reads elements that it has written.
template <class T>
bool feedsItself(const T* src, const T* dst, std::int64_t count)
{
    const std::less<> before;
    return before(src, dst) && before(dst, stepped(src, count));
}

// Whether each step of a loop writes to another cache line.
template <class T>
bool isFar(const Loop& loop)
{
    return loop.to >= static_cast<std::int64_t>(64 / sizeof(T));
}

// A processor stalls on a cache line that it writes to, unlike on one that it reads, so the lines
// of `dst` are prefetched some steps ahead. The fewer instructions an element takes, the more of
// the reads are under way at a time, hence the unrolled loop.
template <class T>
[[gnu::always_inline]] inline void copyOneByOne(const T* src, T* dst, const Loop& outer,
                                                const Loop& inner)
{
    constexpr std::int64_t kAhead = 16;
    const bool prefetches = isFar<T>(outer);
    for (std::int64_t i = 0; i < outer.count; ++i) {
        if (prefetches) {
            exact::prefetch(stepped(dst, outer.to * std::min(i + kAhead, outer.count - 1)));
        }
#pragma GCC unroll 4
        for (std::int64_t j = 0; j < inner.count; ++j) {
            *stepped(dst, outer.to * i + inner.to * j) =
                *stepped(src, outer.from * i + inner.from * j);
        }
    }
}

// Out of line, to leave the registers to rows that are contiguous.
template <class T>
[[gnu::noinline]] void copyStepped(const T* src, T* dst, const Loop& row)
{
    if (isFar<T>(row)) {
        copyOneByOne(src, dst, row, {1, 0, 0});
    } else {
        copyOneByOne(src, dst, {1, 0, 0}, row);
    }
}

template <class T>
void copyRow(const T* src, T* dst, const Loop& row)
{
    if (row.to == 1 && row.from == 0) {
        fillRun(dst, *src, row.count);
    } else if (row.to == 1 && row.from == 1 && !feedsItself(src, dst, row.count)) {
        std::copy_n(src, row.count, dst);
    } else {
        copyStepped(src, dst, row);
    }
}

// Whether the copy transposes a matrix in any order: it writes each element once and reads none of
// those.
template <class T>
bool isTransposition(const T* src, const T* dst, const Loop& rows, const Loop& row)
{
    if (rows.to != 1 || row.from != 1 || row.to < rows.count) {
        return false;
    }
    const std::less<> before;
    return before(stepped(src, rows.from * (rows.count - 1) + row.count - 1), dst) ||
           before(stepped(dst, rows.count - 1 + row.to * (row.count - 1)), src);
}

template <class T>
void copyRows(const T* src, T* dst, const Loop& rows, const Loop& row)
{
    if (row.count < kBlockSide) {  // a call for each short row would cost more than it saves
        copyOneByOne(src, dst, rows, row);
    } else if (rows.count >= kBlockSide && isTransposition(src, dst, rows, row)) {
        transpose(src, rows.from, dst, row.to, rows.count, row.count);
    } else {
        for (std::int64_t i = 0; i < rows.count; ++i) {
            copyRow(stepped(src, rows.from * i), stepped(dst, rows.to * i), row);
        }
    }
}

template <class T>
void copyElements(const T* src, T* dst, const Nest& nest)
{
    const auto [slices, slice, rows, row] = fused(nest);
    for (std::int64_t k = 0; k < slices.count; ++k) {
        for (std::int64_t j = 0; j < slice.count; ++j) {
            copyRows(stepped(src, slices.from * k + slice.from * j),
                     stepped(dst, slices.to * k + slice.to * j), rows, row);
        }
    }
}

struct VoxelIndex {
    unsigned int x;
    unsigned int y;
    unsigned int z;
};

// A voxel, which need not exist if nothing is copied. As in VxImage::operator(), an index from 2^31
// on counts backwards.
template <class T>
struct Place {
    Layout<T> layout;
    VoxelIndex voxel;

    T* element() const
    {
        return stepped(layout.data, layout.strideX * static_cast<int>(voxel.x) +
                                        layout.strideY * static_cast<int>(voxel.y) +
                                        layout.strideZ * static_cast<int>(voxel.z));
    }
};

// Copies voxels with all their channels by three loops, from one place to the other.
template <class T>
void copyVoxels(const Place<T>& from, const Place<T>& to, const Loop& slices, const Loop& rows,
                const Loop& row, unsigned int channels)
{
    const Nest nest{{slices, rows, row, {channels, from.layout.strideC, to.layout.strideC}}};
    if (!isEmpty(nest)) {
        copyElements(from.element(), to.element(), nest);
    }
}

}  // namespace volux::core::detail
