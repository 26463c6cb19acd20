// The nearest voxels to the centres of the voxels of a result, which decide where Labels ties.
#pragma once

#include <cstddef>

#include "Task.h"

namespace volux::resample::detail {

// Safe from many threads.
class NearestLabels {
public:
    explicit NearestLabels(const Task& task);

    // For `count` voxels, at most kBlock, of row j of plane k of the grid, from index `first` on.
    void read(unsigned int first, unsigned int j, unsigned int k, unsigned int c, std::size_t count,
              double* labels) const;

private:
    const Task& task_;
    Source source_;
};

}  // namespace volux::resample::detail
