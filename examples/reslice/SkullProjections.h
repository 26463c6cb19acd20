// The skull seen along parallel rays: its brightest voxels, and its surface.
#pragma once

#include "Job.h"
#include "Picture.h"
#include "Volume.h"

namespace reslice {

constexpr unsigned int kProjections = 3;

/// `volume` has voxels of equal edges and holds Hounsfield units.
Picture projectSkull(const Volume& volume, double pixelEdge, Job& job);

}  // namespace reslice
