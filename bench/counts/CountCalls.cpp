// Makes each kind of call N times and 2N times, and has callgrind write down after each what it
// counted: the difference is what N calls cost, without their loop's beginning and end. Prints a
// line for each case: its name, and how many calls or elements the difference stands for.
// Usage: count_calls SAMPLES PASSES, the N of the sampling calls and that of the others, each of
// which goes over a whole volume
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "counts/Positions.h"
#include "counts/Sampled.h"

using namespace volux::core;
using namespace volux::bench;

namespace {

volatile double sink;

// Out of line and with a number that no compiler knows, so that N and 2N run the same instructions.
template <class Call>
[[gnu::noinline]] void repeat(int times, const Call& call)
{
    double sum = 0;
    for (int turn = 0; turn < times; ++turn)
        sum += static_cast<double>(call(turn));
    sink = sum;
}

template <class Call>
void count(const std::string& name, int calls, std::uint64_t elements, const Call& call)
{
    repeat(1, call);  // looks functions up and makes the policies' tables
    for (const int times : {calls, 2 * calls}) {
        CALLGRIND_ZERO_STATS;
        repeat(times, call);
        CALLGRIND_DUMP_STATS_AT(name.c_str());
    }
    std::printf("%s\t%llu\n", name.c_str(),
                static_cast<unsigned long long>(elements * static_cast<std::uint64_t>(calls)));
}

void must(ErrorType code)
{
    if (code == SUCCESS)
        return;
    std::fprintf(stderr, "count_calls: a call ends with %d.\n", code);
    std::exit(EXIT_FAILURE);
}

template <class T>
struct Scene {
    Scene(int calls, const char* typeName)
        : type(typeName),
          inner(positions(2 * calls, size, inside)),
          outer(positions(2 * calls, size, beyondFace))
    {
        fillWithNoise(image, size);
    }

    const char* type;
    const ImageSize size{40, 36, 32, 1};
    const std::vector<Position> inner;
    const std::vector<Position> outer;
    VxImage<T> image;
};

template <class T, class I, class B>
void countPolicies(const Scene<T>& scene, int calls, const std::string& name, I interpolator,
                   B border)
{
    const auto countAt = [&](const std::vector<Position>& places, const char* where) {
        count(name + scene.type + where, calls, 1, [&](int turn) {
            return sampled(scene.image, places[static_cast<std::size_t>(turn)], interpolator,
                           border);
        });
    };
    countAt(scene.inner, "/inside");
    countAt(scene.outer, "/border");
}

template <class T, class I, class B>
void countBothTimes(const Scene<T>& scene, int calls, const std::string& name, I& interpolator,
                    B& border)
{
    countPolicies<T, I, B>(scene, calls, "compile-time/" + name, interpolator, border);
    countPolicies<T, Interpolator*, Border*>(scene, calls, "run-time/" + name, &interpolator,
                                             &border);
}

template <class T, class I>
void countKernel(const Scene<T>& scene, int calls, const std::string& name, I& kernel)
{
    countBothTimes(scene, calls, name + "/Constant/", kernel, InterpolationBorderType::CONSTANT);
    countBothTimes(scene, calls, name + "/Replication/", kernel,
                   InterpolationBorderType::REPLICATION);
}

template <class T>
void countSampling(int calls, const char* type)
{
    const Scene<T> scene(calls, type);
    countKernel(scene, calls, "nearest", InterpolationType::NEAREST_NEIGHBOR);
    countKernel(scene, calls, "linear", InterpolationType::LINEAR);
    countKernel(scene, calls, "cubic", InterpolationType::CUBIC);
}

// No number that a block of voxels is likely to have divides these extents.
const ImageSize kVolume{50, 44, 36, 1};
constexpr std::uint64_t kVoxels = 50 * 44 * 36;

template <class Read>
double scan(const VxImage<short>& image, const Read& read)
{
    const ImageSize size = kVolume;
    std::int64_t sum = 0;
    for (int z = 0; z < static_cast<int>(size.depth); ++z)
        for (int y = 0; y < static_cast<int>(size.height); ++y)
            for (int x = 0; x < static_cast<int>(size.width); ++x)
                sum += read(image, x, y, z);
    return static_cast<double>(sum);
}

void countAccess(const VxImage<short>& image, int calls)
{
    count("access/operator()", calls, kVoxels, [&](int) {
        return scan(image, [](const VxImage<short>& voxels, int x, int y, int z) {
            return voxels(x, y, z, 0);
        });
    });
    count("access/getValueVoxel(x, y, z, c)", calls, kVoxels, [&](int) {
        return scan(image, [](const VxImage<short>& voxels, int x, int y, int z) {
            return voxels.getValueVoxel(x, y, z, 0);
        });
    });
}

template <class Operate>
void countOperation(const std::string& name, int calls, std::uint64_t elements,
                    const Operate& operate)
{
    count("container/" + name, calls, elements, [&](int) {
        must(operate());
        return 0;
    });
}

void countFills(VxImage<short>& image, int calls)
{
    VxImage<short> coloured;
    fillWithNoise(coloured, {kVolume.width, kVolume.height, kVolume.depth, 3});
    countOperation("fill", calls, kVoxels, [&] { return image.fill(3); });
    countOperation("fill, the only channel", calls, kVoxels, [&] { return image.fill(0, 3); });
    countOperation("fill, one of three channels", calls, kVoxels,
                   [&] { return coloured.fill(1, 3); });
}

void countCopies(VxImage<short>& image, int calls)
{
    const Rect box(3, 43, 4, 36, 5, 30);
    const std::uint64_t voxels = std::uint64_t{box.width()} * box.height() * box.depth();
    VxImage<short> part;
    must(image.crop(box, &part));
    countOperation("crop", calls, voxels, [&] {
        VxImage<short> cropped;
        return image.crop(box, &cropped);
    });
    countOperation("draw", calls, voxels, [&] { return image.draw(part, 3, 4, 5); });
    countOperation("deep copy", calls, kVoxels, [&] {
        VxImage<short> copy;
        return copy.initialize(image, true);
    });
}

using Getter = ErrorType (*)(unsigned int, const VxImage<short>&, VxImage<short>*);

void countPlanes(VxImage<short>& image, int calls, const std::string& name, unsigned int count,
                 Getter get, Getter set)
{
    VxImage<short> plane;
    must(get(0, image, &plane));
    const auto each = [&](const auto& operate) {
        for (unsigned int index = 0; index < count; ++index)
            must(operate(index));
        return SUCCESS;
    };
    countOperation("get" + name, calls, kVoxels, [&] {
        return each([&](unsigned int index) { return get(index, image, &plane); });
    });
    countOperation("set" + name, calls, kVoxels, [&] {
        return each([&](unsigned int index) { return set(index, plane, &image); });
    });
}

void countContainer(int calls)
{
    VxImage<short> image;
    fillWithNoise(image, kVolume);
    countAccess(image, calls);
    countFills(image, calls);
    countCopies(image, calls);
    countPlanes(image, calls, "XyPlane", kVolume.depth, getXyPlane<short>, setXyPlane<short>);
    countPlanes(image, calls, "YzPlane", kVolume.width, getYzPlane<short>, setYzPlane<short>);
    countPlanes(image, calls, "ZxPlane", kVolume.height, getZxPlane<short>, setZxPlane<short>);
}

}  // namespace

int main(int count, char** arguments)
{
    const int samples = count == 3 ? std::atoi(arguments[1]) : 0;
    const int passes = count == 3 ? std::atoi(arguments[2]) : 0;
    if (samples < 1 || passes < 1) {
        std::fprintf(stderr, "usage: count_calls SAMPLES PASSES, each at least 1\n");
        return EXIT_FAILURE;
    }
    countSampling<short>(samples, "short");
    countSampling<float>(samples, "float");
    countContainer(passes);
}
