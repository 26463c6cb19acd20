// One operation, its arguments checked and without their types.
#pragma once

#include <functional>

#include "Blocks.h"
#include "Raster.h"
#include "Work.h"
#include "volux/core/ErrorType.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Options.h"
#include "volux/resample/Resample.h"

namespace volux::resample::detail {

// One sample by volux_core itself: x, y, z in voxels, and the channel.
using OwnSample = std::function<double(double, double, double, int)>;

// What the options' policies mean for one element type.
struct Reading {
    Kernel kernel = Kernel::LINEAR;
    Outside outside = {false, 0.0};
    bool isOwn = false;  // a policy that the library does not know

    // What a sample takes, about, wherever it is.
    double nanoseconds() const { return isOwn ? kOwnSample : obliqueSample(kernel); }
};

// A source, and how it is read.
struct Source {
    Raster raster;
    ResampleRegion region;  // what the raster is a brick of; its output box is not used
    Reading reading;
    OwnSample own;  // samples by the caller's policies, if reading.isOwn

    Voxels voxels(unsigned int channel) const;
    void take(unsigned int channel, Block& block) const;
};

// Fills a destination with a box of a grid, `output`.
struct Task {
    Source source;
    AffineMap map;
    Slab slab;
    core::Rect output;
    Raster destination;
};

// What options mean for an element type. Refuses null policies and a value that it does not hold.
template <class T>
core::ErrorType readingOf(const Options& options, Reading& reading);

// Finite and above 0.
bool isSpacing(const core::VoxelSize& spacing);

core::ErrorType checkSource(const Raster& source);
core::ErrorType checkExtents(const ResampleRegion& region);
core::ErrorType checkGrid(const Grid& grid, const Slab& slab);
core::ErrorType checkBox(const core::Rect& box, const Grid& grid);

// Refuses a destination that overlaps the source, or whose voxels overlap.
core::ErrorType checkOverlap(const Raster& source, const Raster& destination);

// The voxels of the whole source that a box of a grid reads.
core::Rect supportOf(const AffineMap& map, const core::Rect& output, const ResampleRegion& region,
                     const Reading& reading);

// SUCCESS or kCancelled.
core::ErrorType run(const Task& task, const Options& options);

}  // namespace volux::resample::detail
