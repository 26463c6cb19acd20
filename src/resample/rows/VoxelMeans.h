// Sub-samples that are voxels: a change of size by whole factors reads each voxel once.
#pragma once

#include <cstddef>

#include "FieldOfView.h"
#include "Task.h"
#include "resample/vectors/VoxelSums.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// Safe from many threads.
class VoxelMeans {
public:
    VoxelMeans(const Task& task, Overflow overflow) : task_(task), overflow_(overflow) {}

    // Whether all positions are voxels and everything else allows it.
    static bool serve(const Task& task);

    // Fills rows of one slice and channel. False if a weight of 0 may make a difference, which it
    // does beside what is not finite and to -0.0: they must be read then.
    bool fill(std::size_t slice, Range rows, unsigned int c) const;

private:
    bool areFiniteAround(std::size_t slice, Range rows, unsigned int c) const;
    void findNearest(const Channel& channel, std::size_t i, std::size_t j, std::size_t k,
                     std::size_t count, const unsigned char** nearest) const;
    bool find(const Channel& channel, const VoxelBlocks& blocks, std::size_t i, std::size_t j,
              std::size_t k, double* means) const;
    bool fillRow(std::size_t slice, std::size_t row, unsigned int c) const;

    const Task& task_;
    Overflow overflow_;
};

}  // namespace volux::resample::detail
