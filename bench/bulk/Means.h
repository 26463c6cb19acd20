// A volume made smaller by whole factors, and how a case of it is checked and timed.
#pragma once

#include "Bulk.h"

namespace volux::bench {

constexpr int kShrunkExtent = 256;

/// The mean of the block that becomes a voxel of the result.
template <class T>
double blockMean(const Source<T>& source, unsigned int factor, std::size_t voxel)
{
    const std::size_t extent = kShrunkExtent / factor;
    const std::size_t x = voxel % extent * factor;
    const std::size_t y = voxel / extent % extent * factor;
    const std::size_t z = voxel / extent / extent * factor;
    double sum = 0.0;
    for (std::size_t k = z; k < z + factor; ++k) {
        for (std::size_t j = y; j < y + factor; ++j) {
            for (std::size_t i = x; i < x + factor; ++i) {
                sum +=
                    static_cast<double>(source.voxels[(k * kShrunkExtent + j) * kShrunkExtent + i]);
            }
        }
    }
    return sum / (factor * factor * factor);
}

template <class T>
void requireMeans(const Source<T>& source, unsigned int factor, const T* result)
{
    const std::size_t extent = kShrunkExtent / factor;
    for (std::uint64_t i = 0; i < kCompared; ++i) {
        const std::size_t n = scattered(i) % (extent * extent * extent);
        const double mean = blockMean(source, factor, n);
        if (!(std::abs(static_cast<double>(result[n]) - mean) <= tolerance<T>(1e-9))) {
            throw std::runtime_error("it gives " + std::to_string(result[n]) + " for a mean of " +
                                     std::to_string(mean));
        }
    }
}

/// Library<T> is made of a source and a factor; run() does all of the work, and result() is where
/// it left it. An item is a voxel of the source.
template <template <class> class Library, class T>
void measureMeans(benchmark::State& state, unsigned int factor)
{
    const Source<T>& voxels = source<T, kShrunkExtent>();
    Library<T> library(voxels, factor);
    library.run();
    requireMeans(voxels, factor, library.result());
    for (auto _ : state) {
        library.run();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(voxels.voxels.size()));
}

template <template <class> class Library>
void addMeans(const std::string& library)
{
    const auto add = [&](const std::string& type, auto measure) {
        for (const unsigned int factor : {2U, 4U, 8U}) {
            const std::string name = "means/" + type + '/' + std::to_string(factor) + '/' + library;
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
                measure(state, factor);
            })->MeasureProcessCPUTime();
        }
    };
    add("short", measureMeans<Library, short>);
    add("float", measureMeans<Library, float>);
    add("double", measureMeans<Library, double>);
}

}  // namespace volux::bench
