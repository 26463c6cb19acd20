// Readings, stored as elements that any number of bytes separates.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Blocks.h"

namespace volux::resample::detail {

// At most kBlock of them, `stride` bytes apart from `first` on.
void store(core::DataType type, Overflow overflow, const double* readings, std::size_t count,
           std::int64_t stride, unsigned char* first);

}  // namespace volux::resample::detail
