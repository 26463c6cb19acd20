// Highway compiles this file, and what follows in it, once for each instruction set. The last time
// it adds what chooses between them.
#include "Positions.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/Positions.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Positions-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(mapPositionsHere);
HWY_EXPORT(addInViewHere);
HWY_EXPORT(areInViewHere);

void mapPositions(const AffineMap& map, const Block& from, Block& to)
{
    HWY_DYNAMIC_DISPATCH(mapPositionsHere)(map, from, to);
}

void addInView(const Block& block, const Extents& extents, double* coordinates)
{
    HWY_DYNAMIC_DISPATCH(addInViewHere)(block, extents, coordinates);
}

bool areInView(const Block& block, const Extents& extents)
{
    return HWY_DYNAMIC_DISPATCH(areInViewHere)(block, extents);
}

}  // namespace volux::resample::detail

#endif
