// Highway compiles this file once for each instruction set, as it does Block.cpp.
#include "Elements.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/Elements.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Elements-inl.h"

#if HWY_ONCE

#include <cstring>

#include "Block.h"

namespace volux::resample::detail {

HWY_EXPORT(convertHere);

void convert(Storage storage, const double* readings, std::size_t count, void* elements)
{
    HWY_DYNAMIC_DISPATCH(convertHere)(storage, readings, count, elements);
}

void storeElements(Storage storage, const double* readings, std::size_t count, std::int64_t stride,
                   unsigned char* first)
{
    exact::withElementType(storage.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        if (stride == static_cast<std::int64_t>(sizeof(T))) {
            return convert(storage, readings, count, first);
        }
        T elements[kBlock];
        convert(storage, readings, count, elements);
        for (std::size_t n = 0; n < count; ++n) {
            std::memcpy(first + stride * static_cast<std::int64_t>(n), elements + n, sizeof(T));
        }
    });
}

}  // namespace volux::resample::detail

#endif
