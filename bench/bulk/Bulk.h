// What every program brings onto which grid, and how a case is checked and timed.
#pragma once

#include <volux/core.h>
#include <volux/resample.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "../times/Serve.h"
#include "../times/Workloads.h"

namespace volux::bench {

constexpr int kOutsideValue = -77;

/// A cube of voxels and the grid that it is brought onto.
struct Job {
    const char* name;
    int extent;
    resample::Grid grid;
};

inline resample::Position turned(resample::Position p)
{
    const auto turn = [](double& a, double& b, double degrees) {
        const double angle = degrees * 3.14159265358979323846 / 180.0;
        const double turnedA = std::cos(angle) * a - std::sin(angle) * b;
        b = std::sin(angle) * a + std::cos(angle) * b;
        a = turnedA;
    };
    turn(p.y, p.z, 17.0);
    turn(p.z, p.x, 31.0);
    turn(p.x, p.y, 11.0);
    return p;
}

/// Turned by 17, 31 and 11 degrees about the centre of a cube of 256.
inline resample::Grid turnedGrid(double scale, unsigned int width, unsigned int height,
                                 unsigned int depth)
{
    constexpr double kCentre = 127.5;
    const resample::Position corner = turned(
        {-scale * (width - 1.0) / 2, -scale * (height - 1.0) / 2, -scale * (depth - 1.0) / 2});
    resample::Planes planes;
    planes.origin = {kCentre + corner.x, kCentre + corner.y, kCentre + corner.z};
    planes.across = turned({scale, 0, 0});
    planes.down = turned({0, scale, 0});
    planes.step = turned({0, 0, scale});
    planes.width = width;
    planes.height = height;
    planes.count = depth;
    return resample::gridOfPlanes(planes);
}

/// A and B are those of the samples one by one, whole; the plane is one frame of a viewer.
inline std::vector<Job> jobs()
{
    const core::VoxelSize one(1, 1, 1);
    return {{"A", 256, turnedGrid(0.9, 256, 256, 128)},
            {"B", 128,
             resample::gridOfSize(core::ImageSize(128, 128, 128, 1), one, 384, 384, 96,
                                  resample::Align::EDGES)},
            {"plane", 256, turnedGrid(0.45, 512, 512, 1)}};
}

enum class Kernel { kNearest, kLinear, kCubic };
enum class Outside { kConstant, kReplication };

inline resample::Options optionsOf(Kernel kernel, Outside outside)
{
    resample::Options options;
    if (kernel == Kernel::kNearest) {
        options = core::NearestNeighbor();
    } else if (kernel == Kernel::kCubic) {
        options = core::Cubic();
    }
    if (outside == Outside::kConstant) {
        options.border = &core::InterpolationBorderType::CONSTANT;
        options.outside = kOutsideValue;
    }
    options.threads = 1;
    return options;
}

template <class T>
struct Volume {
    std::vector<T> voxels;
    core::VxImage<T> image;

    explicit Volume(int extent) : voxels(makeVoxels<T>(extent))
    {
        const auto size = static_cast<unsigned int>(extent);
        image.initializeWithPointer(voxels.data(), size, size, size, 1);
    }
};

/// Fails unless the result is the module's at 600 voxels of the grid that lie inside by two voxels.
template <class T>
void check(const Job& job, const Volume<T>& source, const T* result, Kernel kernel, Outside outside,
           double tolerance)
{
    const resample::Options options = optionsOf(kernel, outside);
    int compared = 0;
    for (std::uint64_t n = 0; compared < 600; ++n) {
        const auto i = static_cast<unsigned int>(scattered(3 * n) % job.grid.width);
        const auto j = static_cast<unsigned int>(scattered(3 * n + 1) % job.grid.height);
        const auto k = static_cast<unsigned int>(scattered(3 * n + 2) % job.grid.depth);
        const resample::Position p = job.grid.map(i, j, k);
        const auto inside = [&](double x) { return x >= 2.0 && x <= job.extent - 3.0; };
        if (!inside(p.x) || !inside(p.y) || !inside(p.z)) {
            continue;
        }
        const double expected = source.image.getDoubleValueReal(
            p.x, p.y, p.z, 0, options.interpolator, options.border, T{});
        const std::size_t place = (std::size_t{k} * job.grid.height + j) * job.grid.width + i;
        if (!(std::abs(static_cast<double>(result[place]) - expected) <= tolerance)) {
            throw std::runtime_error(std::string(job.name) + ": the result is not the module's");
        }
        ++compared;
    }
}

/// Registers a case for each job, element type, kernel and border. Library<T> is made of a job, its
/// volume, a kernel and a border; run() does all of the work, and result() is where it left it.
template <template <class> class Library, class T>
void addJob(const Job& job, const std::string& type, const std::string& library)
{
    const char* const kernels[] = {"nearest", "linear", "cubic"};
    const char* const borders[] = {"constant", "replication"};
    for (const Kernel kernel : {Kernel::kNearest, Kernel::kLinear, Kernel::kCubic}) {
        for (const Outside outside : {Outside::kConstant, Outside::kReplication}) {
            const std::string name = std::string(job.name) + '/' + type + '/' +
                                     kernels[static_cast<int>(kernel)] + '/' +
                                     borders[static_cast<int>(outside)] + '/' + library;
            const auto measure = [job, kernel, outside](benchmark::State& state) {
                Volume<T> source(job.extent);
                Library<T> work(job, source, kernel, outside);
                work.run();
                check(job, source, work.result(), kernel, outside, Library<T>::kTolerance);
                for (auto _ : state) {
                    work.run();
                }
                state.SetItemsProcessed(state.iterations() * job.grid.width * job.grid.height *
                                        job.grid.depth);
            };
            benchmark::RegisterBenchmark(name.c_str(), measure)->Unit(benchmark::kMillisecond);
        }
    }
}

template <template <class> class Library>
void addLibrary(const std::string& library)
{
    for (const Job& job : jobs()) {
        addJob<Library, short>(job, "short", library);
        addJob<Library, float>(job, "float", library);
    }
}

}  // namespace volux::bench
