// How the rows of a destination are filled: any map, one sample after the other along a row, or a
// map along the axes, whose rows share what they read.
#pragma once

#include <cstddef>
#include <vector>

#include "Task.h"

namespace volux::resample::detail {

// In boxes of whole rows; safe from many threads.
class ObliqueRows {
public:
    ObliqueRows(const Task& task, Overflow overflow);

    std::size_t boxes() const;
    // Boxes `first` to `end` - 1.
    void operator()(std::size_t first, std::size_t end) const;

private:
    void fillBox(unsigned int yFirst, unsigned int zFirst) const;
    void fill(unsigned int x, unsigned int y, unsigned int z, unsigned int c, Block& block) const;
    void projectPlanes(unsigned int x, unsigned int y, unsigned int z, unsigned int c, Block& block,
                       double* projected) const;
    void takePlane(unsigned int x, unsigned int y, std::size_t plane, unsigned int c,
                   Block& block) const;

    const Task& task_;
    Overflow overflow_;
    unsigned int boxRows_;
    unsigned int boxSlices_;
    unsigned int bands_;  // boxes beside one another in a slice
};

// Rows `first` to `end` - 1 of the destination, counted through its slices; safe from many threads.
class AlignedRows {
public:
    AlignedRows(const Task& task, Overflow overflow);

    // Whether the map runs along the axes and everything else allows it.
    static bool serve(const Task& task);

    void operator()(std::size_t first, std::size_t end) const;

private:
    // Rows y to yEnd - 1 of one slice.
    void fillSlice(unsigned int z, unsigned int y, unsigned int yEnd) const;
    void copySlice(unsigned int z, unsigned int y, unsigned int yEnd, unsigned int c) const;
    void copyRow(const unsigned char* from, unsigned char* to) const;
    void fillLines(unsigned int z, unsigned int y, unsigned int yEnd, unsigned int c) const;

    const Task& task_;
    Overflow overflow_;
    std::vector<double> x_;  // the coordinates of columns, rows and slices
    std::vector<double> y_;
    std::vector<double> z_;
    std::vector<std::int64_t> columns_;  // nearest: where each column is read, or kOutside
    bool isRun_ = false;                 // nearest: the columns lie side by side
};

}  // namespace volux::resample::detail
