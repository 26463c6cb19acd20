// Projects of InVesalius: a compressed tar archive with a property list and raw 16-bit voxels.
#pragma once

#include <memory>
#include <string>

#include "Volume.h"

namespace reslice {

/// Throws Failure unless the archive holds a main.plist and a matrix.dat that fit each other.
std::unique_ptr<Volume> readInv3(const std::string& path);

}  // namespace reslice
