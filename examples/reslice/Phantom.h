// A head made of formulas, for machines without the volumes of real ones.
#pragma once

#include <memory>

#include "Volume.h"

namespace reslice {

enum class Modality { MR, CT };

/// Voxels of 1 x 1 x 1.5 mm.
std::unique_ptr<Volume> makePhantom(Modality modality);

}  // namespace reslice
