// Resamples while it is being loaded, and again when asked, on several threads.
#include "volux/core.h"
#include "volux/resample.h"

using namespace volux::core;

namespace {

// What a volume of `value` gives, or 0 if a voxel differs.
double resampleOnThreads(float value)
{
    VxImage<float> image;
    VxImage<float> larger;
    image.initialize(16, 16, 16, 1);
    image.fill(value);
    volux::resample::Options options = Linear();
    options.threads = 4;
    if (resize(image, 96, 96, 96, volux::resample::Align::EDGES, &larger, options) != SUCCESS) {
        return 0.0;
    }
    for (int n = 0; n < 96 * 96 * 96; ++n) {
        if (larger.getBufferPointer()[n] != value) {
            return 0.0;
        }
    }
    return static_cast<double>(value);
}

const double sampledAtLoad = resampleOnThreads(2.0F);

}  // namespace

extern "C" double voluxPluginSampledAtLoad()
{
    return sampledAtLoad;
}

extern "C" double voluxPluginSample()
{
    return resampleOnThreads(12.0F);
}
