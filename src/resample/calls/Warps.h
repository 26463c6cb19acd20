// Displacement fields that calls take.
#pragma once

#include <optional>

#include "resample/rows/FieldOfView.h"
#include "resample/rows/Task.h"
#include "volux/core/ErrorType.h"
#include "volux/resample/Warp.h"

namespace volux::resample::detail {

// Refuses a warp or makes a displacement of it.
core::ErrorType displacementOf(const Warp& warp, std::optional<Displacement>& displacement);

// Bounds of the positions in the source that a box of a grid leads to, through a displacement field
// or without. Those that are not finite are ignored where they read nothing of the source.
Reach reachOf(const AffineMap& map, const core::Rect& box,
              const std::optional<Displacement>& displacement, const Reading& reading);

}  // namespace volux::resample::detail
