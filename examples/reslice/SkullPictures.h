// The pictures of a CT volume on voxels of equal edges: cuts and projections, bone window.
#pragma once

#include "OutputFolder.h"
#include "Volume.h"

namespace reslice {

void makeSkullPictures(const Volume& volume, const OutputFolder& folder);

}  // namespace reslice
