// Fills rows with folded sub-samples by a map along the axes.
#pragma once

#include <cstddef>
#include <vector>

#include "AxisTables.h"
#include "Fold.h"
#include "NearestLabels.h"
#include "Task.h"
#include "VoxelMeans.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// Rows `first` to `end` - 1 of the destination, counted through its slices; safe from many threads.
class AntialiasedRows {
public:
    // Rows that are filled together, and share what they read.
    static constexpr std::size_t kRows = 16;

    AntialiasedRows(const Task& task, Overflow overflow);

    // Whether the map runs along the axes and everything else allows it.
    static bool serve(const Task& task);

    void operator()(std::size_t first, std::size_t end) const;

private:
    // A box of voxels of one slice and channel, all of whose sub-samples are folded together.
    struct Tile {
        Range columns;
        Range rows;
        std::size_t slice;
        unsigned int channel;
    };

    void fillTiles(std::size_t slice, Range rows, unsigned int c, Fold& fold) const;
    void fill(const Tile& tile, Fold& fold) const;
    void readNearest(const Tile& tile, double* labels) const;
    // A slice of the finer grid.
    void foldSlice(const Tile& tile, std::size_t z, Fold& fold) const;

    const Task& task_;
    Overflow overflow_;
    NearestLabels nearest_;
    AxisTables axes_;              // of the finer grid
    std::vector<double> outside_;  // what a line reads out of view
    VoxelMeans voxels_;
    bool areVoxels_;
};

}  // namespace volux::resample::detail
