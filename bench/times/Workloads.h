// What is sampled, and where: the same voxels and the same positions in every program, computed by
// the same code in the same loop.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace volux::bench {

// Scatters the bits of a counter; splitmix64.
inline std::uint64_t scattered(std::uint64_t counter)
{
    std::uint64_t bits = (counter + 1) * 0x9E3779B97F4A7C15ULL;
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBULL;
    return bits ^ (bits >> 31U);
}

constexpr double kLargestVoxel = 1300.0;

/// A cube of voxels, smooth plus noise.
template <class T>
std::vector<T> makeVoxels(int extent)
{
    std::vector<double> wave;
    for (int i = 0; i < extent; ++i) {
        wave.push_back(std::sin(0.07 * i));
    }
    std::vector<T> voxels;
    voxels.reserve(wave.size() * wave.size() * wave.size());
    for (const double z : wave) {
        for (const double y : wave) {
            for (const double x : wave) {
                const auto noise = static_cast<double>(scattered(voxels.size()) >> 11U);
                voxels.push_back(
                    static_cast<T>(800.0 * x * y + 400.0 * z + 100.0 * (noise * 0x1p-52 - 1.0)));
            }
        }
    }
    return voxels;
}

struct Point {
    double x, y, z;
};

/// The sum over some slices of an output volume: every sliceStep-th, in scan order.
template <class Sample>
double sumOverSlices(Point origin, const Point (&steps)[3], const int (&extents)[3], int firstSlice,
                     int sliceStep, Sample sample)
{
    double sum = 0.0;
    for (int k = firstSlice; k < extents[2]; k += sliceStep) {
        for (int j = 0; j < extents[1]; ++j) {
            const Point row = {origin.x + steps[1].x * j + steps[2].x * k,
                               origin.y + steps[1].y * j + steps[2].y * k,
                               origin.z + steps[1].z * j + steps[2].z * k};
            for (int i = 0; i < extents[0]; ++i) {
                sum += static_cast<double>(
                    sample(row.x + steps[0].x * i, row.y + steps[0].y * i, row.z + steps[0].z * i));
            }
        }
    }
    return sum;
}

/// A: turned by 17, 31 and 11 degrees about the centre of 256^3 at scale 0.9.
struct Oblique {
    static constexpr const char* kName = "A";
    static constexpr int kExtent = 256;
    static constexpr int kOutput[3] = {256, 256, 128};
    static constexpr int kFirstSlice = 8;
    static constexpr int kSliceStep = 16;
    static constexpr int kSamples = kOutput[0] * kOutput[1] * kOutput[2] / kSliceStep;

    template <class Sample>
    static double sum(Sample sample)
    {
        const Point steps[3] = {turned({0.9, 0.0, 0.0}), turned({0.0, 0.9, 0.0}),
                                turned({0.0, 0.0, 0.9})};
        const Point corner =
            turned({-0.45 * (kOutput[0] - 1), -0.45 * (kOutput[1] - 1), -0.45 * (kOutput[2] - 1)});
        constexpr double kCentre = (kExtent - 1) / 2.0;
        return sumOverSlices({kCentre + corner.x, kCentre + corner.y, kCentre + corner.z}, steps,
                             kOutput, kFirstSlice, kSliceStep, sample);
    }

    static Point turned(Point point)
    {
        turn(point.y, point.z, 17.0);
        turn(point.z, point.x, 31.0);
        turn(point.x, point.y, 11.0);
        return point;
    }

private:
    static void turn(double& a, double& b, double degrees)
    {
        const double angle = degrees * 3.14159265358979323846 / 180.0;
        const double turnedA = std::cos(angle) * a - std::sin(angle) * b;
        b = std::sin(angle) * a + std::cos(angle) * b;
        a = turnedA;
    }
};

/// B: 128^3 brought to 384 x 384 x 96 along the axes, voxel centres at half a voxel.
struct Upsampling {
    static constexpr const char* kName = "B";
    static constexpr int kExtent = 128;
    static constexpr int kOutput[3] = {384, 384, 96};
    static constexpr int kFirstSlice = 0;
    static constexpr int kSliceStep = 24;
    static constexpr int kSamples = kOutput[0] * kOutput[1] * kOutput[2] / kSliceStep;

    template <class Sample>
    static double sum(Sample sample)
    {
        constexpr Point kScale = {double{kExtent} / kOutput[0], double{kExtent} / kOutput[1],
                                  double{kExtent} / kOutput[2]};
        const Point steps[3] = {{kScale.x, 0.0, 0.0}, {0.0, kScale.y, 0.0}, {0.0, 0.0, kScale.z}};
        return sumOverSlices({0.5 * kScale.x - 0.5, 0.5 * kScale.y - 0.5, 0.5 * kScale.z - 0.5},
                             steps, kOutput, kFirstSlice, kSliceStep, sample);
    }
};

// One of 2^21 places on each axis, from half a voxel before the first to half a voxel after the
// last.
inline Point randomPoint(std::uint64_t counter, int extent)
{
    const std::uint64_t bits = scattered(counter);
    const double unit = extent * 0x1p-21;
    const auto place = [unit](std::uint64_t axis) {
        return static_cast<double>(static_cast<std::int64_t>(axis & 0x1FFFFFU)) * unit - 0.5;
    };
    return {place(bits), place(bits >> 21U), place(bits >> 42U)};
}

/// C: four million random positions, of which every kStep-th is taken.
struct Scattered {
    static constexpr const char* kName = "C";
    static constexpr int kExtent = 256;
    static constexpr int kStep = 16;
    static constexpr int kSamples = 4'000'000 / kStep;

    template <class Sample>
    static double sum(Sample sample)
    {
        double sum = 0.0;
        for (std::uint64_t i = 0; i < 4'000'000; i += kStep) {
            const Point point = randomPoint(i, kExtent);
            sum += static_cast<double>(sample(point.x, point.y, point.z));
        }
        return sum;
    }
};

// Moves a position by nothing, which only the processor finds out.
inline volatile double tiny = 1e-300;

/// D: no position is known before the sample at the one before it.
struct Chain {
    static constexpr const char* kName = "D";
    static constexpr int kExtent = 64;
    static constexpr int kSamples = 200'000;

    template <class Sample>
    static double sum(Sample sample)
    {
        const double factor = tiny;
        double last = 0.0;
        for (std::uint64_t i = 0; i < kSamples; ++i) {
            const Point point = randomPoint(i, kExtent);
            const double shift = last * factor;
            last = static_cast<double>(sample(point.x + shift, point.y + shift, point.z + shift));
        }
        return last;
    }
};

}  // namespace volux::bench
