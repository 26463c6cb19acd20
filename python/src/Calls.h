// Volumes, positions and displacement fields: the calls that do the work.
#pragma once

#include "Reading.h"

namespace volux::python {

void addCalls(nb::module_& module);

}  // namespace volux::python
