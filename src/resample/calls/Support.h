// Which voxels of a source a box of the output reads.
#pragma once

#include "resample/rows/FieldOfView.h"
#include "resample/rows/Task.h"

namespace volux::resample::detail {

// In voxels of the whole source, of positions that are somewhere in `all`.
core::Rect supportOf(const Reach& all, const ResampleRegion& region, const Reading& reading);

}  // namespace volux::resample::detail
