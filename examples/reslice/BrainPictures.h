// The pictures of a volume as it is: its planes, an oblique one, its borders, a montage.
#pragma once

#include "OutputFolder.h"
#include "Volume.h"

namespace reslice {

void makeBrainPictures(const Volume& volume, const OutputFolder& folder);

}  // namespace reslice
