// What the policies of a call's options mean.
#pragma once

#include "resample/rows/Task.h"
#include "volux/core/ErrorType.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// What options mean for an element type. Refuses null policies and a value that it does not hold.
template <class T>
core::ErrorType readingOf(const Options& options, Reading& reading);

}  // namespace volux::resample::detail
