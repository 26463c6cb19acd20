// NIfTI-1 volumes, plain or compressed.
#pragma once

#include <memory>
#include <string>

#include "Volume.h"

namespace reslice {

/// Reads a single-file NIfTI-1 volume (.nii or .nii.gz) of either byte order; of a series, the
/// first volume. Throws Failure for everything else.
std::unique_ptr<Volume> readNifti(const std::string& path);

}  // namespace reslice
