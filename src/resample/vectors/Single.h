// One sample at a time, of a channel that is prepared once.
#pragma once

#include "Channel.h"
#include "volux/resample/Sampler.h"

namespace volux::resample::detail {

// Prepares a channel of a whole source for readings by a kernel, with the widest vectors that the
// processor has.
SampledChannel sampledChannel(const Channel& channel, Kernel kernel, const Outside& outside);

}  // namespace volux::resample::detail
