// Numbers as people read them.
#pragma once

#include <string>

namespace reslice {

/// "1.5", not "1.500000".
std::string shortNumber(double value);

}  // namespace reslice
