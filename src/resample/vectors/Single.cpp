// Highway compiles this file, and what follows in it, once for each instruction set. The last time
// it adds what chooses between them.
#include "Single.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "resample/vectors/Single.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Single-inl.h"

#if HWY_ONCE

namespace volux::resample::detail {

HWY_EXPORT(singleReader);

namespace {

// Where a position has all its neighbours inside, along one axis: from its first neighbour to it
// there are `before` voxels, and `after` to its last. Nearest neighbour adds one half first.
void setInterior(SampledChannel& sampled, int n, const Axis& axis, Kernel kernel)
{
    const int before = kernel == Kernel::CUBIC ? 1 : 0;
    const int after = reach(kernel) - 1 - before;
    sampled.strides[n] = axis.stride;
    sampled.extents[n] = axis.extent;
    sampled.back += before * axis.stride;
    sampled.begin[n] = before;
    sampled.end[n] = static_cast<double>(axis.extent) - after;
}

}  // namespace

SampledChannel sampledChannel(const Channel& channel, Kernel kernel, const Outside& outside)
{
    SampledChannel sampled;
    sampled.data = channel.data;
    sampled.isConstant = outside.isConstant;
    sampled.outside = outside.value;
    setInterior(sampled, 0, channel.x, kernel);
    setInterior(sampled, 1, channel.y, kernel);
    setInterior(sampled, 2, channel.z, kernel);
    sampled.begin[3] = sampled.begin[2];
    sampled.end[3] = sampled.end[2];
    sampled.read = HWY_DYNAMIC_DISPATCH(singleReader)(channel, kernel);
    return sampled;
}

}  // namespace volux::resample::detail

#endif
