// Lines of samples along the axes, which share the rows of the source that they read. Compiled for
// every instruction set and chosen at run time; all of them give the same bits.
#pragma once

#include <cstddef>

#include "Channel.h"

namespace volux::resample::detail {

// Columns that are read together: their neighbours stay in the nearest cache.
constexpr std::size_t kTile = 64;

// One slice of lines, by Linear or Cubic. No position is far from zero, nor is what pads the
// columns to whole vectors. The channel has words.
struct Lines {
    Channel channel;
    Kernel kernel;
    Outside outside;
    const double* x;  // of each column
    const double* y;  // of each line
    double z;
    std::size_t columns;  // at most kTile
    std::size_t lines;
};

// Takes the readings of one line after the other.
class LineSink {
public:
    virtual void take(std::size_t line, const double* readings) = 0;

protected:
    ~LineSink() = default;
};

void readLines(const Lines& lines, LineSink& sink);

}  // namespace volux::resample::detail
