// Work in parts, on several threads.
#pragma once

#include <cstddef>
#include <functional>

#include "volux/resample/Options.h"

namespace volux::resample::detail {

// Calls `work(first, end)` for parts of at most `most` of `items`, on the threads that the options
// allow, and the progress callback after each part. False if that said stop: parts that had begun
// are finished, the others are left out. What a call throws ends the work likewise, and is thrown.
bool shareOut(std::size_t items, std::size_t most, const Options& options,
              const std::function<void(std::size_t, std::size_t)>& work);

}  // namespace volux::resample::detail
