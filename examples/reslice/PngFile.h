// Pictures on disk.
#pragma once

#include <string>

#include "Picture.h"

namespace reslice {

/// Writes a PNG file that is either whole or not there: the bytes go to a temporary neighbour,
/// which takes the name at the end and is removed on any failure. Throws Failure.
void writePng(const Picture& picture, const std::string& path);

}  // namespace reslice
