// Samples through a displacement field: their positions follow one another in no order. Safe from
// many threads.
#pragma once

#include "Task.h"

namespace volux::resample::detail {

// Leads the positions of a block, in the space of the vectors, into the source.
void displace(const Displacement& displacement, Block& block);

// Reads a channel at positions in any order. Where the edge ends, nothing is read for those out of
// view, which get the value outside.
void readWhereInView(const Source& source, unsigned int c, Block& block);

}  // namespace volux::resample::detail
