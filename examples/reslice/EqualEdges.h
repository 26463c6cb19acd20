// Brings volumes to voxels of equal edges.
#pragma once

#include <memory>

#include "Job.h"
#include "Volume.h"

namespace reslice {

/// Voxels whose edges are the shortest of the volume's, so that no detail is lost. Throws Failure
/// if there would be too many of them.
Layout layoutOfEqualEdges(const Volume& volume);

/// Tricubic, in one tile of the job; the field of view is kept.
std::unique_ptr<Volume> makeIsotropic(const Volume& volume, Job& job);

}  // namespace reslice
