// The first bytes of a NIfTI-1 file, read with suspicion.
#pragma once

#include <nifti1.h>

#include <cstddef>
#include <string>

namespace reslice {

/// The header in the machine's byte order. Throws Failure unless every field that the program
/// relies on makes sense and the file is long enough for its first volume: niftiio itself trusts
/// what a header says.
nifti_1_header soundHeader(const std::string& path);

/// How many bytes the first volume takes.
std::size_t voxelBytes(const nifti_1_header& header);

}  // namespace reslice
