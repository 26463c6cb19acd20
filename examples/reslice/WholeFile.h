// Files that either are complete or do not exist.
#pragma once

#include <string>
#include <vector>

namespace reslice {

/// Writes the bytes to a temporary file beside it, which is renamed at the end and removed on any
/// failure. Throws Failure.
void writeWhole(const std::vector<unsigned char>& bytes, const std::string& path);

}  // namespace reslice
