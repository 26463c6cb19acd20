// Fills rows by a map along the axes, whose rows share what they read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "AxisTables.h"
#include "Task.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// Rows `first` to `end` - 1 of the destination, counted through its slices; safe from many threads.
class AlignedRows {
public:
    AlignedRows(const Task& task, Overflow overflow);

    // Whether the map runs along the axes and everything else allows it.
    static bool serve(const Task& task);

    void operator()(std::size_t first, std::size_t end) const;

private:
    void findColumns();
    // Rows y to yEnd - 1 of one slice.
    void fillSlice(unsigned int z, unsigned int y, unsigned int yEnd) const;
    void copySlice(unsigned int z, unsigned int y, unsigned int yEnd, unsigned int c) const;
    void copyRow(const unsigned char* from, unsigned char* to) const;
    void fillLines(unsigned int z, unsigned int y, unsigned int yEnd, unsigned int c) const;
    void readLinesInView(unsigned int z, Range rows, unsigned int c) const;
    // Stores what is read out of view.
    void fillOutside(Range columns, Range rows, unsigned int z, unsigned int c) const;

    const Task& task_;
    Overflow overflow_;
    AxisTables axes_;
    std::vector<std::int64_t> columns_;  // nearest: where each column is read, or kOutside
    alignas(double) unsigned char outside_[sizeof(double)];  // the stored value
    bool isRun_ = false;                                     // nearest: the columns are contiguous
};

}  // namespace volux::resample::detail
