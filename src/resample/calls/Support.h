// Which voxels of a source a box of the output reads.
#pragma once

#include "resample/rows/Task.h"

namespace volux::resample::detail {

// In voxels of the whole source.
core::Rect supportOf(const AffineMap& map, const core::Rect& output, const ResampleRegion& region,
                     const Reading& reading);

}  // namespace volux::resample::detail
