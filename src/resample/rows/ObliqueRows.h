// Fills rows by any map, one sample after the other.
#pragma once

#include <cstddef>

#include "Fold.h"
#include "NearestLabels.h"
#include "Task.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// In boxes of whole rows; safe from many threads.
class ObliqueRows {
public:
    ObliqueRows(const Task& task, Overflow overflow);

    std::size_t boxes() const;
    // Boxes `first` to `end` - 1.
    void operator()(std::size_t first, std::size_t end) const;

private:
    struct Part : Block {
        bool isRead;  // all of it, in every row of the box
        Fold* fold;   // for as many voxels as it has, or null
    };

    void fillBox(unsigned int yFirst, unsigned int zFirst) const;
    bool isRead(unsigned int x, unsigned int columns, unsigned int y, unsigned int yEnd,
                unsigned int z, unsigned int zEnd) const;
    void fill(unsigned int x, unsigned int y, unsigned int z, unsigned int c, Part& part) const;
    void projectPlanes(unsigned int x, unsigned int y, unsigned int z, unsigned int c, Part& part,
                       double* projected) const;
    void takePlane(unsigned int x, unsigned int y, std::size_t plane, unsigned int c,
                   Part& part) const;
    void foldRow(unsigned int first, std::size_t count, unsigned int j, unsigned int k,
                 unsigned int c, Part& part) const;
    void takeRow(unsigned int first, unsigned int j, unsigned int k, unsigned int c,
                 Part& part) const;
    void readInView(Position row, Position step, unsigned int first, unsigned int c,
                    Block& block) const;
    void takeDisplaced(Position row, Position step, unsigned int first, unsigned int c,
                       Part& part) const;

    const Task& task_;
    Overflow overflow_;
    NearestLabels nearest_;
    unsigned int boxRows_;
    unsigned int boxSlices_;
    unsigned int bands_;  // boxes beside one another in a slice
};

}  // namespace volux::resample::detail
