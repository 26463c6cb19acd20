// One operation, its arguments checked and without their types.
#pragma once

#include <functional>
#include <optional>

#include "UntypedImage.h"
#include "resample/vectors/Block.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Options.h"
#include "volux/resample/Resample.h"

namespace volux::resample::detail {

// One sample by volux_core itself: x, y, z in voxels, and the channel.
using OwnSample = std::function<double(double, double, double, int)>;

// What the options' policies mean for one element type.
struct Reading {
    Kernel kernel = Kernel::LINEAR;
    bool isLabels = false;  // the neighbours that the kernel weighs vote by their labels
    Outside outside = {false, 0.0};
    bool isOwn = false;     // a policy that the library does not know
    bool edgeEnds = false;  // out of view, a grid's samples are outside.value
};

// A source, and how it is read.
struct Source {
    UntypedImage image;
    ResampleRegion region;  // what the image is a brick of; its output box is not used
    Reading reading;
    OwnSample own;                   // samples by the caller's policies, if reading.isOwn
    OwnSample ownNearest = nullptr;  // the same with the nearest voxel, for Labels

    Channel channel(unsigned int c) const;
    // Reads channel c at the positions of a block.
    void read(unsigned int c, Block& block) const;
};

// A region whose brick is the whole source.
ResampleRegion wholeOf(const VoxelLayout& source);

// A displacement field between the positions of a grid and those in a source.
struct Displacement {
    Source field;  // three channels, read by Linear, whose edge goes on as far as it is in view
    AffineMap toField;
    AffineMap toVoxels;
};

// Fills a destination with a box of a grid, `output`.
struct Task {
    Source source;
    AffineMap map;          // of the finer grid, if voxels have sub-samples
    Subsamples subsamples;  // none of them 0
    Slab slab;
    core::Rect output;
    UntypedImage destination;
    std::optional<Displacement> displacement;
    AffineMap centres = {};  // of the voxels of the result, divided or not
};

}  // namespace volux::resample::detail
