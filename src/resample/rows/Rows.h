// Fills the rows of a destination.
#pragma once

#include "Task.h"

namespace volux::resample::detail {

// On the threads that the options allow. False if parts of the work were left out.
bool fillRows(const Task& task, const Options& options);

}  // namespace volux::resample::detail
