// Pictures as PNG.
#pragma once

#include <string>
#include <vector>

#include "Picture.h"

namespace reslice {

/// The bytes of a PNG file. Throws Failure, which names `path`.
std::vector<unsigned char> encodePng(const Picture& picture, const std::string& path);

}  // namespace reslice
