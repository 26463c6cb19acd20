// What a program may write that uses every namespace of volux: a call through `resample::` is never
// ambiguous, although the function resample has the name of its namespace.
#include "volux/core.h"
#include "volux/resample.h"

using namespace volux;
using namespace volux::core;
using namespace volux::resample;

namespace {

[[maybe_unused]] ErrorType callEach(const VxImage<short>& image, VxImage<short>* result)
{
    const resample::Grid grid = gridOfPlanes(Planes());
    const resample::Position place = grid.map(0, 0, 0);
    double reading = 0.0;
    const ErrorType codes[] = {
        resample::resample(image, grid, result, Cubic()),
        resample::resample(image, grid, resample::ResampleRegion(), result),
        resample::reslice(image, Planes(), result, Options(Linear(), Constant(), -1000)),
        resample::resize(image, {1, 1, 1}, Align::EDGES, result),
        resample::sample(image, &place, 1, Units::VOXELS, kAllChannels, &reading),
        resample::resample(image, grid, resample::Warp(), result, Cubic()),
        resample::resample(image, grid, Warp(), resample::ResampleRegion(), result),
        reslice(image, Planes(), result),
        resize(image, 1, 1, 1, Align::CENTRES, result),
        sample(image, &place, 1, Units::PHYSICAL, 0, &reading),
        sample(image, grid.map, &place, 1, 0, &reading),
        sampleGradient(image, &place, 1, Units::PHYSICAL, 0, nullptr),
        resample::sampleGradient(image, grid.map, &place, 1, 0, nullptr),
        resample::Sampler(image, Cubic(), 1).error(),
        resample::resample<short>(image, grid, nullptr),
        resample::resample<short, short>(image, grid, resample::ResampleRegion(), result),
        resample::resample(resample::viewOf(image), grid, resample::viewOf(*result)),
    };
    return codes[0];
}

}  // namespace
