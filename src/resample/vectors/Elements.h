// Readings as elements in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "volux/core/DataType.h"
#include "volux/resample/Options.h"

namespace volux::resample::detail {

// How a type stores readings. An integer rounds them half away from zero first.
struct Storage {
    core::DataType type;
    Overflow overflow;
};

// Stores readings as contiguous elements.
void convert(Storage storage, const double* readings, std::size_t count, void* elements);

// Stores at most kBlock readings as elements `stride` bytes apart, from `first` on.
void storeElements(Storage storage, const double* readings, std::size_t count, std::int64_t stride,
                   unsigned char* first);

}  // namespace volux::resample::detail
