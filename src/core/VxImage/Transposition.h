// Transposes a matrix tile by tile. An optimising compiler keeps a tile in registers and
// interleaves them as intrinsics would, for every element type and processor.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "Nest.h"

namespace volux::core::detail {

template <class T>
struct Tile {
    static constexpr int kSide = 16 / sizeof(T);  // a row fills a register
    T elements[kSide * kSide];
};

// Rotates the bits of every element's index to the left by one.
template <class T>
Tile<T> interleaved(const Tile<T>& tile)
{
    constexpr int kHalf = Tile<T>::kSide * Tile<T>::kSide / 2;
    Tile<T> result;
    for (int i = 0; i < kHalf; ++i) {
        result.elements[2 * i] = tile.elements[i];
        result.elements[2 * i + 1] = tile.elements[i + kHalf];
    }
    return result;
}

// Row and column are the two halves of an index; rotating it by half of its bits swaps them.
template <class T>
void transposeTile(const T* src, std::int64_t srcRow, T* dst, std::int64_t dstRow)
{
    constexpr int kSide = Tile<T>::kSide;
    Tile<T> tile;
    for (int row = 0; row < kSide; ++row) {
        std::memcpy(tile.elements + row * kSide, stepped(src, srcRow * row), sizeof(T) * kSide);
    }
    for (int turned = 1; turned < kSide; turned *= 2) {
        tile = interleaved(tile);
    }
    for (int row = 0; row < kSide; ++row) {
        std::memcpy(stepped(dst, dstRow * row), tile.elements + row * kSide, sizeof(T) * kSide);
    }
}

// The side of a block of tiles; its rows share cache lines.
constexpr std::int64_t kBlockSide = 16;

template <class T>
void transposeBlock(const T* src, std::int64_t srcRow, T* dst, std::int64_t dstRow)
{
    for (std::int64_t column = 0; column < kBlockSide; column += Tile<T>::kSide) {
        for (std::int64_t row = 0; row < kBlockSide; row += Tile<T>::kSide) {
            transposeTile(stepped(src, srcRow * row + column), srcRow,
                          stepped(dst, dstRow * column + row), dstRow);
        }
    }
}

// The matrix must have at least a block of rows and of columns. Elements are written in no
// particular order, and some twice: the last blocks overlap those before them.
template <class T>
void transpose(const T* src, std::int64_t srcRow, T* dst, std::int64_t dstRow, std::int64_t rows,
               std::int64_t columns)
{
    // Cache lines far apart evict each other, so the inner loop runs along the rows that are
    // farther apart.
    const bool alongRows = srcRow > dstRow;
    const auto outerCount = alongRows ? rows : columns;
    const auto innerCount = alongRows ? columns : rows;
    for (std::int64_t i = 0; i < outerCount; i += kBlockSide) {
        for (std::int64_t j = 0; j < innerCount; j += kBlockSide) {
            const auto outer = std::min(i, outerCount - kBlockSide);
            const auto inner = std::min(j, innerCount - kBlockSide);
            const auto row = alongRows ? outer : inner;
            const auto column = alongRows ? inner : outer;
            transposeBlock(stepped(src, srcRow * row + column), srcRow,
                           stepped(dst, dstRow * column + row), dstRow);
        }
    }
}

}  // namespace volux::core::detail
