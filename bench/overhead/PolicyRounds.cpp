// Times the same samples with policies chosen at compile time and at run time, and the image's
// member beside the kernel that it calls. Prints a line for each round of each case: its name, then
// for each way to call the nanoseconds of a call. Usage: policy_rounds ROUNDS
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "counts/Positions.h"
#include "counts/Sampled.h"
#include "overhead/ProcessorTime.h"

using namespace volux::core;
using namespace volux::bench;

namespace {

// Volume and positions stay in the caches, so that the calls show and the memory does not.
const ImageSize kSize{32, 32, 32, 1};
constexpr int kPositions = 4096;

volatile double sink;

struct Places {
    const char* name;
    std::vector<Position> at;
};

Position aTenthBeyondFace(Uniform& uniform, const ImageSize& size)
{
    return uniform.between(0, 10) < 1 ? beyondFace(uniform, size) : inside(uniform, size);
}

// One pass over all positions.
using Pass = std::function<void()>;

template <class Call>
Pass passOver(const Places& places, Call call)
{
    return [&places, call] {
        double sum = 0;
        for (const Position& at : places.at)
            sum += static_cast<double>(call(at));
        sink = sum;
    };
}

double nanosecondsPerCall(const Pass& pass)
{
    const double start = processorTime();
    pass();
    return (processorTime() - start) / kPositions;
}

// Each round begins with another way, so that none always follows the same one.
void timeWays(const std::string& name, const std::vector<Pass>& ways, int rounds)
{
    std::vector<double> times(ways.size());
    for (const Pass& way : ways)
        way();
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t turn = 0; turn < ways.size(); ++turn) {
            const std::size_t way = (turn + static_cast<std::size_t>(round)) % ways.size();
            times[way] = nanosecondsPerCall(ways[way]);
        }
        std::printf("%s", name.c_str());
        for (const double each : times)
            std::printf("\t%.4f", each);
        std::printf("\n");
    }
}

template <class T, class I, class B>
void timeAt(const VxImage<T>& image, const Places& places, const std::string& name, int rounds,
            I& kernel, B& border)
{
    const std::vector<Pass> ways = {
        passOver(places,
                 [&](const Position& at) { return sampled<I, B>(image, at, kernel, border); }),
        passOver(places,
                 [&](const Position& at) {
                     return sampled<Interpolator*, Border*>(image, at, &kernel, &border);
                 }),
        passOver(places,
                 [&](const Position& at) {
                     return image.template getValueVoxel<I, B>(at.x, at.y, at.z, 0, kernel, border,
                                                               7);
                 }),
        passOver(places, [&](const Position& at) {
            return kernel.template operator()<T, B>(image, at.x, at.y, at.z, 0, border, 7);
        })};
    timeWays(name + "/" + places.name, ways, rounds);
}

template <class T>
void timeType(const char* type, int rounds)
{
    const Places everywhere[] = {
        {"inside", positions(kPositions, kSize, inside)},
        {"a tenth outside", positions(kPositions, kSize, aTenthBeyondFace)}};
    VxImage<T> image;
    fillWithNoise(image, kSize);
    const auto timeKernel = [&](const std::string& name, auto& kernel) {
        for (const Places& places : everywhere) {
            timeAt(image, places, name + "/Constant/" + type, rounds, kernel,
                   InterpolationBorderType::CONSTANT);
            timeAt(image, places, name + "/Replication/" + type, rounds, kernel,
                   InterpolationBorderType::REPLICATION);
        }
    };
    timeKernel("nearest", InterpolationType::NEAREST_NEIGHBOR);
    timeKernel("linear", InterpolationType::LINEAR);
    timeKernel("cubic", InterpolationType::CUBIC);
}

}  // namespace

int main(int count, char** arguments)
{
    const int rounds = count == 2 ? std::atoi(arguments[1]) : 0;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: policy_rounds ROUNDS, at least 1\n");
        return EXIT_FAILURE;
    }
    timeType<short>("short", rounds);
    timeType<float>("float", rounds);
}
