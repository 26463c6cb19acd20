// Blocks of samples: the steps from indices to stored elements, each compiled for every
// instruction set and chosen at run time. All instruction sets give the same bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Voxels.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// Samples of a block, and the room that a vector may write behind them.
constexpr std::size_t kBlock = 256;
constexpr std::size_t kRoom = kBlock + 8;

// Eight bytes are read at once: of one row, since what lies between rows need not be readable, and
// of a source whose bytes a double counts exactly.
constexpr std::size_t kWordBytes = sizeof(std::uint64_t);
inline bool haveWords(const Voxels& voxels, std::int64_t elementBytes)
{
    return voxels.x.span() + elementBytes >= static_cast<std::int64_t>(kWordBytes) &&
           voxels.span <= std::int64_t{1} << 50U;
}

struct Block {
    alignas(64) double x[kRoom];
    alignas(64) double y[kRoom];
    alignas(64) double z[kRoom];
    alignas(64) double samples[kRoom];
    std::size_t count;
};

// The positions row + step * i for the indices from `first` on.
void fillPositions(Position row, Position step, unsigned int first, Block& block);

// Of positions that are padded with zeros to whole vectors.
void takeSamples(const Voxels& voxels, Kernel kernel, const Outside& outside, Block& block);

// Columns that are taken together along the axes: their neighbours stay in the nearest cache.
constexpr std::size_t kTile = 64;

// Rows of samples along the axes, by Linear or Cubic, of columns of one slice. No position is far
// from zero, and the columns' are padded to whole vectors. For sources that have words.
struct Lines {
    Voxels voxels;
    Kernel kernel;
    Outside outside;
    const double* x;  // of each column
    const double* y;  // of each row
    double z;
    std::size_t columns;  // at most kTile
    std::size_t rows;
};

// Takes the samples of one row after the other.
class LineSink {
public:
    virtual void take(std::size_t row, const double* samples) = 0;

protected:
    ~LineSink() = default;
};

void takeLines(const Lines& lines, LineSink& sink);

// Readings as elements, one after the other. Integers are rounded half away from zero first.
void convert(core::DataType type, Overflow overflow, const double* samples, std::size_t count,
             void* elements);

}  // namespace volux::resample::detail
