// What becomes of the sub-samples of a voxel.
#pragma once

#include <cstddef>
#include <memory>

#include "Task.h"

namespace volux::resample::detail {

// Makes one reading of the sub-samples of each of some voxels, which are counted one row after the
// other. Each voxel is given its sub-samples in the order of the finer grid: x fastest, then y,
// then z. For one thread.
class Fold {
public:
    virtual ~Fold() = default;

    // Forgets everything; at most as many voxels as there is room for. `nearest` has the nearest
    // voxel to the centre of each, if the kernel is Labels.
    virtual void begin(std::size_t voxels, const double* nearest) = 0;
    // Takes successive sub-samples of a row of the finer grid. Where they begin is counted in
    // sub-samples along x: `first` / n is the voxel of the first of them.
    virtual void take(std::size_t first, const double* readings, std::size_t count) = 0;
    // Whether it must be given all sub-samples once more.
    virtual bool goesOn() { return false; }
    // The reading of each voxel.
    virtual const double* finish() = 0;
};

// Room for so many voxels, and the rule that the task's kernel asks for; null for voxels that are
// read at one position.
std::unique_ptr<Fold> foldOf(const Task& task, std::size_t voxels);

}  // namespace volux::resample::detail
