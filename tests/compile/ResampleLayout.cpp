// Programs are compiled with these sizes: a change of one needs another SOVERSION of
// volux_resample.
#include "volux/resample.h"

namespace volux::resample {

#if defined(__GLIBCXX__) && __SIZEOF_POINTER__ == 8
static_assert(sizeof(Options) == 112);
static_assert(sizeof(Grid) == 136);
static_assert(sizeof(Geometry) == 136);
static_assert(sizeof(PlacedGrid) == 272);
static_assert(sizeof(Planes) == 136);
static_assert(sizeof(Slab) == 8);
static_assert(sizeof(Subsamples) == 12);
static_assert(sizeof(Labels) == 8);
static_assert(sizeof(ResampleRegion) == 48);
static_assert(sizeof(Warp) == 280);
static_assert(sizeof(WarpedGrid) == 416);
static_assert(sizeof(AffineMap) == 96);
static_assert(sizeof(Position) == 24);
static_assert(sizeof(Positions) == 32);
static_assert(sizeof(VoxelLayout) == 72);
static_assert(sizeof(View<const short>) == 80);
static_assert(sizeof(View<void>) == 88);
static_assert(sizeof(Image<short>) == 8);
static_assert(sizeof(Sampler) == 184);
static_assert(sizeof(ReadingAndGradient) == 32);
static_assert(sizeof(detail::SampledChannel) == 160);
static_assert(sizeof(detail::Target) == 96);
static_assert(sizeof(detail::Frame) == 16);
static_assert(sizeof(detail::Results) == 16);
#endif

}  // namespace volux::resample
