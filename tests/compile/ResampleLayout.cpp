// Programs are compiled with these sizes: a change of one needs another SOVERSION of
// volux_resample.
#include "volux/resample.h"

namespace volux::resample {

#if defined(__GLIBCXX__) && __SIZEOF_POINTER__ == 8
static_assert(sizeof(Options) == 96);
static_assert(sizeof(Grid) == 136);
static_assert(sizeof(Geometry) == 136);
static_assert(sizeof(PlacedGrid) == 272);
static_assert(sizeof(Planes) == 136);
static_assert(sizeof(Slab) == 8);
static_assert(sizeof(ResampleRegion) == 48);
static_assert(sizeof(AffineMap) == 96);
static_assert(sizeof(Position) == 24);
#endif

}  // namespace volux::resample
