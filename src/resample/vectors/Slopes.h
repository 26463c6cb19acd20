// The derivatives of one reading, in doubles.
#pragma once

#include "exact/Rules.h"

namespace volux::exact {

#include "Slopes.inc"

}  // namespace volux::exact
