// Samples by volux_core itself, for policies of the caller's own.
#pragma once

#include "resample/rows/Task.h"
#include "volux/core/ErrorType.h"
#include "volux/resample/Options.h"
#include "volux/resample/View.h"

namespace volux::resample::detail {

// Makes a sampler of an image of the source's voxels, whose spacing is 1: positions in physical
// units are then positions in voxels, to the last bit. Refuses a source of more bytes than an image
// may have. Where no image describes the source, it is copied, which takes memory.
// `nearest`, unless it is null, gets one that reads the nearest voxel by the same border.
core::ErrorType sampleByImage(const View<const void>& source, const Options& options,
                              OwnSample& sample, OwnSample* nearest = nullptr);

}  // namespace volux::resample::detail
