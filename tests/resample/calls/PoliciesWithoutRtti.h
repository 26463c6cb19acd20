// Policies of a program that is compiled with -fno-rtti.
#pragma once

#include "volux/core.h"

namespace volux::test {

// 1000 * x + z.
core::Interpolator* interpolatorWithoutRtti();
// Its class is derived from Linear, and samples as Linear does.
core::Interpolator* linearWithoutRtti();
// Reads the call's value, less the index along x.
core::Border* borderWithoutRtti();

}  // namespace volux::test
