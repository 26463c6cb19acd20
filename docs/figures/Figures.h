// The figures, each drawn from what the library answers.
#pragma once

#include "Svg.h"

namespace figures {

Svg kernels();     ///< the three kernels along a step and along an impulse
Svg borders();     ///< both borders around a small picture, with each kernel
Svg indexRules();  ///< which index a position gives
Svg layouts();     ///< three layouts of one image in memory
Svg states();      ///< the states of an image and the calls between them

}  // namespace figures
