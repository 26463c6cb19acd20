// Compares the samples of volux_core with those of CImg<double> at random positions.
// Usage: cimg_outsider POSITIONS SEED
// Prints a line for each comparison: what, positions, largest difference as a part of the largest
// voxel, tolerance. Where the tolerance is passed, the standard error has the place.
#define cimg_display 0
#define cimg_verbosity 0
#include <CImg.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "OutsiderScenes.h"

namespace volux::test {
namespace {

using Outsider = cimg_library::CImg<double>;
using oracle::Position;

struct Scene {
    explicit Scene(Random& random)
        : wrapped(plainVolume(random)),
          outside(randomVoxel(random)),
          outsider(wrapped.volume.block.data(), wrapped.volume.extents.width,
                   wrapped.volume.extents.height, wrapped.volume.extents.depth)
    {
    }

    WrappedVolume<double> wrapped;
    double outside;
    Outsider outsider;
};

struct FloatPosition {
    float x;
    float y;
    float z;
};

// CImg takes positions as floats and raises the fraction to its powers as a float. A fraction of
// eight bits has an exact square and cube there.
float ofEightBits(double coordinate)
{
    return static_cast<float>(std::floor(coordinate * 256.0) / 256.0);
}

float ofAnyFraction(double coordinate)
{
    return static_cast<float>(coordinate);
}

bool anywhere(float, unsigned int)
{
    return true;
}

// CImg moves the position to the edge where the library moves each neighbour. For a cubic that is
// the same unless the position is within one voxel outside.
bool notJustOutside(float coordinate, unsigned int extent)
{
    const float last = static_cast<float>(extent - 1);
    return coordinate <= -1.0F || (coordinate >= 0.0F && coordinate <= last) ||
           coordinate >= last + 1.0F;
}

struct Method {
    const char* name;
    double (*module)(const core::VxImage<double>&, const Position&, double outside);
    double (*outsider)(const Outsider&, const FloatPosition&, double outside);
    bool (*comparable)(float coordinate, unsigned int extent);
    double toleranceEightBits;
    double toleranceAnyFraction;
};

const Method kMethods[] = {
    {"linear_atXYZ, outside value", sampled<core::Linear, core::Constant>,
     [](const Outsider& image, const FloatPosition& p, double outside) {
         return image.linear_atXYZ(p.x, p.y, p.z, 0, outside);
     },
     anywhere, 0x1p-44, 0x1p-22},
    {"linear_atXYZ, Neumann borders", sampled<core::Linear, core::Replication>,
     [](const Outsider& image, const FloatPosition& p, double) {
         return image.linear_atXYZ(p.x, p.y, p.z);
     },
     anywhere, 0x1p-44, 0x1p-44},
    {"cubic_atXYZ, outside value", sampled<core::Cubic, core::Constant>,
     [](const Outsider& image, const FloatPosition& p, double outside) {
         return image.cubic_atXYZ(p.x, p.y, p.z, 0, outside);
     },
     anywhere, 0x1p-41, 0x1p-18},
    {"cubic_atXYZ, Neumann borders", sampled<core::Cubic, core::Replication>,
     [](const Outsider& image, const FloatPosition& p, double) {
         return image.cubic_atXYZ(p.x, p.y, p.z);
     },
     notJustOutside, 0x1p-41, 0x1p-18},
};

bool isComparable(const Method& method, const FloatPosition& p, const Extents& extents)
{
    return method.comparable(p.x, extents.width) && method.comparable(p.y, extents.height) &&
           method.comparable(p.z, extents.depth);
}

double difference(const Method& method, const Scene& scene, const FloatPosition& p)
{
    const double module = method.module(scene.wrapped.image, {p.x, p.y, p.z}, scene.outside);
    const double outsider = method.outsider(scene.outsider, p, scene.outside);
    return std::fabs(module - outsider) / kLargestVoxel;
}

// All that repeats a comparison beyond the tolerance.
void printPlace(const Method& method, const Scene& scene, const FloatPosition& p,
                std::uint64_t seed)
{
    const Extents& e = scene.wrapped.volume.extents;
    std::fprintf(stderr, "%s: %a from volux_core at %a %a %a, extents %u %u %u, seed %llu\n",
                 method.name, difference(method, scene, p), static_cast<double>(p.x),
                 static_cast<double>(p.y), static_cast<double>(p.z), e.width, e.height, e.depth,
                 static_cast<unsigned long long>(seed));
}

void compare(const Method& method, float (*rounded)(double), unsigned int positions,
             std::uint64_t seed)
{
    constexpr unsigned int kPositionsPerScene = 1000;
    const bool exact = rounded == ofEightBits;
    const double tolerance = exact ? method.toleranceEightBits : method.toleranceAnyFraction;
    Random random(seed);
    unsigned int compared = 0;
    double largest = 0.0;
    while (compared < positions) {
        const Scene scene(random);
        const Extents& extents = scene.wrapped.volume.extents;
        for (unsigned int n = 0; n < kPositionsPerScene; ++n) {
            const Position near = nearPosition(random, extents);
            const FloatPosition p{rounded(near.x), rounded(near.y), rounded(near.z)};
            if (!isComparable(method, p, extents))
                continue;
            ++compared;
            const double found = difference(method, scene, p);
            if (found <= largest || std::isnan(largest))  // a NaN is taken, and kept
                continue;
            largest = found;
            if (!(largest <= tolerance))
                printPlace(method, scene, p, seed);
        }
    }
    std::printf("%s, %s\t%u\t%.17g\t%.17g\n", method.name,
                exact ? "fractions of 8 bits" : "any float", compared, largest, tolerance);
}

}  // namespace
}  // namespace volux::test

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const auto positions = static_cast<unsigned int>(std::strtoul(argv[1], nullptr, 10));
    const std::uint64_t seed = std::strtoull(argv[2], nullptr, 10);
    for (const auto& method : volux::test::kMethods) {
        volux::test::compare(method, volux::test::ofEightBits, positions, seed);
        volux::test::compare(method, volux::test::ofAnyFraction, positions, seed);
    }
    return 0;
}
