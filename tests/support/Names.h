// What every test calls by its own name: the classes, codes and static policies of volux_core.
#pragma once

#include <array>

#include "volux/core.h"

namespace volux::test {

using namespace core;
using namespace core::InterpolationBorderType;
using namespace core::InterpolationType;

constexpr std::array<const char*, 4> kKernelNames{"NearestNeighbor", "Linear", "Cubic", "Labels"};
constexpr std::array<const char*, 2> kBorderNames{"Constant", "Replication"};

}  // namespace volux::test
