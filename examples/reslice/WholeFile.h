// Files that are either whole or not there.
#pragma once

#include <string>
#include <vector>

namespace reslice {

/// The bytes go to a temporary neighbour, which takes the name at the end and is removed on any
/// failure. Throws Failure.
void writeWhole(const std::vector<unsigned char>& bytes, const std::string& path);

}  // namespace reslice
