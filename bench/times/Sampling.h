// The cases of a library that samples: every workload, element type, kernel and border, each
// checked against volux_core before it is timed.
#pragma once

#include <volux/core.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "Serve.h"
#include "Workloads.h"

namespace volux::bench {

enum class Kernel { kNearest, kLinear, kCubic };
enum class Outside { kConstant, kReplication };

constexpr int kOutsideValue = -77;

template <class T>
struct Source {
    int extent;
    std::vector<T> voxels;

    // Libraries that wrap memory ask for it unprotected; none of them writes.
    T* data() const { return const_cast<T*>(voxels.data()); }
};

/// The voxels of a cube, made when they are first asked for.
template <class T, int Extent>
const Source<T>& source()
{
    static const Source<T> made = {Extent, makeVoxels<T>(Extent)};
    return made;
}

template <Kernel K>
using Interpolator =
    std::conditional_t<K == Kernel::kNearest, core::NearestNeighbor,
                       std::conditional_t<K == Kernel::kLinear, core::Linear, core::Cubic>>;
template <Outside O>
using Border = std::conditional_t<O == Outside::kConstant, core::Constant, core::Replication>;

/// volux_core's own image around the voxels.
template <class T>
class Wrapped {
public:
    explicit Wrapped(const Source<T>& source)
    {
        const auto extent = static_cast<unsigned int>(source.extent);
        image_.initializeWithPointer(source.data(), extent, extent, extent, 1);
    }

    const core::VxImage<T>& image() const { return image_; }

private:
    core::VxImage<T> image_;
};

constexpr int kCompared = 600;

// Inside by two voxels, or outside by four: where all libraries mean the same. An odd number of
// parts of 512 is no tie, and a float holds it.
inline double comparedPlace(std::uint64_t counter, int extent)
{
    const std::uint64_t bits = scattered(counter);
    const auto part = static_cast<double>((bits >> 8U) % 256) / 256.0 + 1.0 / 512.0;
    const auto voxel = static_cast<int>((bits >> 16U) % static_cast<unsigned int>(extent - 5));
    if (bits % 16 == 0) {
        return part - 5 - voxel % 3;
    }
    return bits % 16 == 1 ? part + extent + 3 + voxel % 3 : part + 2 + voxel;
}

/// The largest difference between a sampler and volux_core at kCompared positions.
template <class T, Kernel K, Outside O, class Sampler>
double largestDifference(const Sampler& sampler, const Source<T>& source)
{
    const Wrapped<T> wrapped(source);
    double largest = 0.0;
    for (std::uint64_t i = 0; i < 3 * kCompared; i += 3) {
        const Point point = {comparedPlace(i, source.extent), comparedPlace(i + 1, source.extent),
                             comparedPlace(i + 2, source.extent)};
        const double ours = wrapped.image().template getDoubleValueReal<Interpolator<K>, Border<O>>(
            point.x, point.y, point.z, 0, Interpolator<K>(), Border<O>(), T{kOutsideValue});
        const auto theirs = static_cast<double>(sampler(point.x, point.y, point.z));
        if (!(std::abs(theirs - ours) <= Sampler::kTolerance)) {
            std::ostringstream text;
            text.precision(17);
            text << "at (" << point.x << ", " << point.y << ", " << point.z << ") it gives "
                 << theirs << " where volux_core gives " << ours;
            throw std::runtime_error(text.str());
        }
        largest = std::max(largest, std::abs(theirs - ours));
    }
    return largest;
}

template <template <class, Kernel, Outside> class Library, class Workload, class T, Kernel K,
          Outside O>
void measure(benchmark::State& state)
{
    using Sampler = Library<T, K, O>;
    const Source<T>& voxels = source<T, Workload::kExtent>();
    static const Sampler sampler(voxels);
    if constexpr (Sampler::kComparable) {
        static const double difference = largestDifference<T, K, O>(sampler, voxels);
        state.counters["difference"] = difference;
        state.counters["tolerance"] = Sampler::kTolerance;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            Workload::sum([](double x, double y, double z) { return sampler(x, y, z); }));
    }
    state.SetItemsProcessed(state.iterations() * Workload::kSamples);
}

template <template <class, Kernel, Outside> class Library, class Workload, class T, Kernel K>
void addBorders(const std::string& name, const std::string& library)
{
    benchmark::RegisterBenchmark((name + "/constant/" + library).c_str(),
                                 measure<Library, Workload, T, K, Outside::kConstant>);
    benchmark::RegisterBenchmark((name + "/replication/" + library).c_str(),
                                 measure<Library, Workload, T, K, Outside::kReplication>);
}

template <template <class, Kernel, Outside> class Library, class Workload, class T>
void addKernels(const std::string& name, const std::string& library)
{
    addBorders<Library, Workload, T, Kernel::kNearest>(name + "/nearest", library);
    addBorders<Library, Workload, T, Kernel::kLinear>(name + "/linear", library);
    addBorders<Library, Workload, T, Kernel::kCubic>(name + "/cubic", library);
}

template <template <class, Kernel, Outside> class Library, class Workload>
void addWorkload(const std::string& library)
{
    const std::string name = Workload::kName;
    addKernels<Library, Workload, short>(name + "/short", library);
    addKernels<Library, Workload, float>(name + "/float", library);
}

template <template <class, Kernel, Outside> class Library>
void addLibrary(const std::string& library)
{
    addWorkload<Library, Oblique>(library);
    addWorkload<Library, Upsampling>(library);
    addWorkload<Library, Scattered>(library);
    addWorkload<Library, Chain>(library);
}

}  // namespace volux::bench
