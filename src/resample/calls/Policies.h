// What the policies of a call's options mean.
#pragma once

#include "resample/rows/Task.h"
#include "volux/core/DataType.h"
#include "volux/core/ErrorType.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// What options, whose policies are not null, mean for an element type. Refuses a value that it does
// not hold.
core::ErrorType readingOf(core::DataType type, const Options& options, Reading& reading);

}  // namespace volux::resample::detail
