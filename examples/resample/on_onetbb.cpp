// The work of a call on the threads of oneTBB, for a program that uses them already.
#include <oneapi/tbb/parallel_for.h>
#include <volux/core.h>
#include <volux/resample.h>

#include <algorithm>
#include <iostream>

using namespace volux::core;
using namespace volux::resample;

int main()
{
    VxImage<float> volume, onOwnThreads, onTasks;
    volume.initialize(32, 32, 32, 1);
    for (int n = 0; n < 32 * 32 * 32; ++n)
        volume.getBufferPointer()[n] = static_cast<float>(n % 1009);
    Options options = Cubic();
    const ErrorType first = resize(volume, 128, 128, 128, Align::EDGES, &onOwnThreads, options);
    options.executor = [](std::size_t parts, const auto& part) {
        oneapi::tbb::parallel_for(std::size_t{0}, parts, part);
    };
    const ErrorType second = resize(volume, 128, 128, 128, Align::EDGES, &onTasks, options);
    const float* const voxels = onOwnThreads.getBufferPointer();
    const bool areEqual = first == SUCCESS && second == SUCCESS &&
                          std::equal(voxels, voxels + 128 * 128 * 128, onTasks.getBufferPointer());
    std::cout << (areEqual ? "the same voxels" : "other voxels") << '\n';
    return areEqual ? 0 : 1;  // prints: the same voxels
}
