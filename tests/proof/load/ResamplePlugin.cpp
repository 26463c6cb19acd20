// The plug-in of the load tests that links volux_resample: a call on four threads, and a refused
// one.
#include "volux/resample.h"

#include "volux/core.h"

using namespace volux::core;
namespace resample = volux::resample;

namespace {

// Enough work that four threads are worth starting.
constexpr unsigned int kExtent = 96;

ErrorType resize(VxImage<short>* to)
{
    VxImage<short> from;
    from.initialize(kExtent, kExtent, kExtent, 1);
    from.fill(12);
    resample::Options options{Cubic(), Replication()};
    options.threads = 4;
    return resample::resize(from, kExtent, kExtent, kExtent, resample::Align::CENTRES, to, options);
}

}  // namespace

// A voxel of the result, read through volux_core's tables, which are made and destroyed as well.
extern "C" double voluxPluginSample()
{
    VxImage<short> to;
    if (resize(&to) != SUCCESS)
        return 0.0;
    return to.getDoubleValueReal(5.0, 6.0, 7.0, 0, &InterpolationType::LINEAR,
                                 &InterpolationBorderType::REPLICATION, 0.0);
}

// Whether a call without a destination is refused.
extern "C" int voluxPluginMisuse()
{
    return resize(nullptr) == SUCCESS ? 0 : 1;
}
