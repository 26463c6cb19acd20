// Samples while it is being loaded, and again when asked, through every table.
#include "volux/core.h"

using namespace volux::core;

namespace {

double sampleAtRunTime(Interpolator* interpolator, Border* border)
{
    float voxels[] = {1.0F, 3.0F};
    VxImage<float> image;
    image.initializeWithPointer(voxels, 2, 1, 1, 1);
    return image.getDoubleValueReal(0.5, -1.0, 0.0, 0, interpolator, border, 4.0F);
}

const double sampledAtLoad =
    sampleAtRunTime(&InterpolationType::LINEAR, &InterpolationBorderType::REPLICATION);

}  // namespace

extern "C" double voluxPluginSampledAtLoad()
{
    return sampledAtLoad;
}

extern "C" double voluxPluginSample()
{
    double sum = 0.0;
    for (Interpolator* interpolator :
         {static_cast<Interpolator*>(&InterpolationType::NEAREST_NEIGHBOR),
          static_cast<Interpolator*>(&InterpolationType::LINEAR),
          static_cast<Interpolator*>(&InterpolationType::CUBIC)}) {
        sum += sampleAtRunTime(interpolator, &InterpolationBorderType::CONSTANT);
    }
    return sum;
}

// Whether misuse throws what its callers can catch.
extern "C" int voluxPluginMisuse()
{
    VxImage<float> image;
    image.initialize(1, 1, 1, 1);
    try {
        image.initialize(1, 1, 1, 1);
    } catch (const volux::base::Exception&) {
        return 1;
    }
    return 0;
}
