// Makes the first call of a policy's table in this process from many threads at once. Tables are
// created once in a process, so each trial is a process of its own.
// Usage: first_call INTERPOLATOR BORDER, each the place of a policy in the arrays below
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "volux/core.h"

using namespace volux::core;

namespace {

constexpr int kThreads = 16;

Interpolator* const kInterpolators[] = {&InterpolationType::NEAREST_NEIGHBOR,
                                        &InterpolationType::LINEAR, &InterpolationType::CUBIC};
Border* const kBorders[] = {&InterpolationBorderType::CONSTANT,
                            &InterpolationBorderType::REPLICATION};

// At 2.5 in the row 10, 20, 30: the last voxel and its neighbours outside, which are 40 or 30. The
// cubic weights are -1/16, 9/16, 9/16 and -1/16.
constexpr double kExpected[3][2] = {
    {40.0, 30.0},
    {(30.0 + 40.0) / 2, 30.0},
    {(9 * (30.0 + 40.0) - (20.0 + 40.0)) / 16, (9 * (30.0 + 30.0) - (20.0 + 30.0)) / 16}};

double firstCall(std::size_t interpolator, std::size_t border)
{
    short voxels[] = {10, 20, 30};
    VxImage<short> image;
    image.initializeWithPointer(voxels, 3, 1, 1, 1);
    return image.getDoubleValueReal(2.5, 0, 0, 0, kInterpolators[interpolator], kBorders[border],
                                    40);
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 3)
        return EXIT_FAILURE;
    const std::size_t interpolator = std::strtoul(arguments[1], nullptr, 10) % 3;
    const std::size_t border = std::strtoul(arguments[2], nullptr, 10) % 2;
    std::atomic<int> arrived{0};
    std::array<double, kThreads> results{};
    std::vector<std::thread> threads;
    for (double& result : results)
        threads.emplace_back([&] {
            ++arrived;
            while (arrived < kThreads)
                std::this_thread::yield();
            result = firstCall(interpolator, border);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const double result : results)
        if (result != kExpected[interpolator][border]) {
            std::printf("%.17g instead of %.17g\n", result, kExpected[interpolator][border]);
            return EXIT_FAILURE;
        }
    return EXIT_SUCCESS;
}
