// What every program brings onto which grid, or samples where, and how a case is checked and timed.
#pragma once

#include <volux/resample.h>

#include "../times/Sampling.h"

namespace volux::bench {

using resample::Grid;
using resample::Position;
using Positions = std::vector<Position>;

/// A map of the workload A's directions, whose middle reads the centre of a cube.
inline Grid turnedGrid(int extent, double scale, unsigned int width, unsigned int height,
                       unsigned int depth)
{
    const auto position = [](const Point& p) { return Position{p.x, p.y, p.z}; };
    const double centre = (extent - 1) / 2.0;
    const Point corner = Oblique::turned(
        {-scale * (width - 1.0) / 2, -scale * (height - 1.0) / 2, -scale * (depth - 1.0) / 2});
    resample::Planes planes;
    planes.origin = {centre + corner.x, centre + corner.y, centre + corner.z};
    planes.across = position(Oblique::turned({scale, 0, 0}));
    planes.down = position(Oblique::turned({0, scale, 0}));
    planes.step = position(Oblique::turned({0, 0, scale}));
    planes.width = width;
    planes.height = height;
    planes.count = depth;
    return gridOfPlanes(planes);
}

/// Some slices of a grid.
inline Grid slices(Grid grid, unsigned int first, unsigned int count)
{
    for (auto& row : grid.map.rows) {
        row[3] += row[2] * first;
    }
    grid.depth = count;
    return grid;
}

/// A: a quarter of the slices of an oblique volume, side by side.
struct ObliqueVolume {
    static constexpr const char* kName = "A";
    static constexpr int kExtent = 256;
    static Grid target() { return slices(turnedGrid(kExtent, 0.9, 256, 256, 128), 16, 32); }
};

/// B: a quarter of the slices of an upsampling along the axes.
struct UpsampledVolume {
    static constexpr const char* kName = "B";
    static constexpr int kExtent = 128;
    static Grid target()
    {
        const core::VoxelSize one(1, 1, 1);
        return slices(resample::gridOfSize(core::ImageSize(kExtent, kExtent, kExtent, 1), one, 384,
                                           384, 96, resample::Align::EDGES),
                      12, 24);
    }
};

/// C: a million random positions.
struct RandomPositions {
    static constexpr const char* kName = "C";
    static constexpr int kExtent = 256;
    static Positions target()
    {
        Positions positions;
        for (std::uint64_t i = 0; i < 1'000'000; ++i) {
            const Point point = randomPoint(4 * i, kExtent);
            positions.push_back({point.x, point.y, point.z});
        }
        return positions;
    }
};

/// A grid that a displacement field of float lies before, its nodes every 4 voxels.
struct Warped {
    static constexpr unsigned int kNodes = 64;
    static constexpr double kApart = 4.0;
    static constexpr double kFirst = 1.5;

    Grid grid;
    std::vector<float> vectors;

    resample::Warp warp() const
    {
        constexpr double kScale = 1.0 / kApart;
        constexpr double kOffset = -kFirst / kApart;
        return {resample::View<const float>(vectors.data(), kNodes, kNodes, kNodes, 3),
                {{{kScale, 0, 0, kOffset}, {0, kScale, 0, kOffset}, {0, 0, kScale, kOffset}}},
                resample::AffineMap()};
    }
};

/// W: an eighth of the slices of a volume that is registered, moved by up to 8 voxels.
struct WarpedVolume {
    static constexpr const char* kName = "W";
    static constexpr int kExtent = 256;
    static Warped target()
    {
        Warped made;
        made.grid.width = made.grid.height = made.grid.depth = kExtent;
        made.grid = slices(made.grid, 112, 32);
        for (unsigned int n = 0; n < Warped::kNodes * Warped::kNodes * Warped::kNodes; ++n) {
            const double x = 0.09 * (n % 64);
            const double y = 0.07 * (n / 64 % 64);
            const double z = 0.11 * (n / 4096);
            for (const double wave : {std::sin(y + z), std::cos(x - z), std::sin(x + y)}) {
                made.vectors.push_back(static_cast<float>(8.0 * wave));
            }
        }
        return made;
    }
};

/// One frame of a viewer.
struct ViewersPlane {
    static constexpr const char* kName = "plane";
    static constexpr int kExtent = 256;
    static Grid target() { return turnedGrid(kExtent, 0.45, 512, 512, 1); }
};

inline std::size_t count(const Grid& grid)
{
    return std::size_t{grid.width} * grid.height * grid.depth;
}

inline std::size_t count(const Warped& warped)
{
    return count(warped.grid);
}

inline std::size_t count(const Positions& positions)
{
    return positions.size();
}

inline Position position(const Grid& grid, std::size_t n)
{
    const auto row = static_cast<unsigned int>(n / grid.width);
    return grid.map(static_cast<unsigned int>(n % grid.width), row % grid.height,
                    row / grid.height);
}

inline Position position(const Warped& warped, std::size_t n)
{
    return warped.warp()(position(warped.grid, n));
}

inline Position position(const Positions& positions, std::size_t n)
{
    return positions[n];
}

// Inside by two voxels, and away from where the nearest voxel changes: all libraries mean the same.
inline bool isComparable(const Position& p, int extent)
{
    const auto isPlain = [extent](double x) {
        return x >= 2.0 && x <= extent - 3.0 && std::abs(x - std::floor(x) - 0.5) > 1e-6;
    };
    return isPlain(p.x) && isPlain(p.y) && isPlain(p.z);
}

/// The largest difference between a result and volux_core at kCompared positions.
template <class T, Kernel K, class Target, class Result>
double largestDifference(const Source<T>& source, const Target& target, const Result* result,
                         double tolerance)
{
    const Wrapped<T> module(source);
    double largest = 0.0;
    int compared = 0;
    for (std::uint64_t i = 0; compared < kCompared; ++i) {
        const std::size_t n = scattered(i) % count(target);
        const Position p = position(target, n);
        if (!isComparable(p, source.extent)) {
            continue;
        }
        const double ours = module.image().getDoubleValueReal(p.x, p.y, p.z, 0, Interpolator<K>());
        const double difference = std::abs(static_cast<double>(result[n]) - ours);
        if (!(difference <= tolerance)) {
            throw std::runtime_error("it gives " + std::to_string(result[n]) +
                                     " where volux_core gives " + std::to_string(ours));
        }
        largest = std::max(largest, difference);
        ++compared;
    }
    return largest;
}

/// Library<T, K, O, Target> is made of a source and of where it is read; run() does all of the
/// work, and result() is where it left it: elements of T on a grid, doubles at positions.
template <template <class, Kernel, Outside, class> class Library, class Workload, class T, Kernel K,
          Outside O>
void measureBulk(benchmark::State& state)
{
    static const auto target = Workload::target();
    const Source<T>& voxels = source<T, Workload::kExtent>();
    Library<T, K, O, std::decay_t<decltype(target)>> library(voxels, target);
    library.run();
    if constexpr (decltype(library)::kComparable) {
        const double tolerance = decltype(library)::kTolerance;
        static const double difference =
            largestDifference<T, K>(voxels, target, library.result(), tolerance);
        state.counters["difference"] = difference;
        state.counters["tolerance"] = tolerance;
    }
    for (auto _ : state) {
        library.run();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count(target)));
}

template <class T>
std::string caseName(const std::string& workload, Kernel kernel, Outside outside)
{
    constexpr const char* kKernels[] = {"nearest", "linear", "cubic"};
    return workload + (std::is_same_v<T, short> ? "/short/" : "/float/") +
           kKernels[static_cast<int>(kernel)] +
           (outside == Outside::kConstant ? "/constant/" : "/replication/");
}

// The time of the whole process: a library may work on a thread of its own.
template <template <class, Kernel, Outside, class> class Library, class Workload, class T, Kernel K,
          Outside O>
void addCase(const std::string& library)
{
    const std::string name = caseName<T>(Workload::kName, K, O) + library;
    benchmark::RegisterBenchmark(name.c_str(), measureBulk<Library, Workload, T, K, O>)
        ->MeasureProcessCPUTime();
}

template <template <class, Kernel, Outside, class> class Library, class Workload, Kernel K>
void addKernel(const std::string& library)
{
    addCase<Library, Workload, short, K, Outside::kConstant>(library);
    addCase<Library, Workload, short, K, Outside::kReplication>(library);
    addCase<Library, Workload, float, K, Outside::kConstant>(library);
    addCase<Library, Workload, float, K, Outside::kReplication>(library);
}

template <template <class, Kernel, Outside, class> class Library, class Workload>
void addBulkKernels(const std::string& library)
{
    addKernel<Library, Workload, Kernel::kNearest>(library);
    addKernel<Library, Workload, Kernel::kLinear>(library);
    addKernel<Library, Workload, Kernel::kCubic>(library);
}

/// All workloads, and the plane by the linear kernel.
template <template <class, Kernel, Outside, class> class Library>
void addBulk(const std::string& library)
{
    addBulkKernels<Library, ObliqueVolume>(library);
    addBulkKernels<Library, UpsampledVolume>(library);
    addBulkKernels<Library, RandomPositions>(library);
    addKernel<Library, ViewersPlane, Kernel::kLinear>(library);
}

/// What is written: elements onto a grid, readings at positions.
template <class T, class Target>
using Written = std::conditional_t<std::is_same_v<Target, Positions>, double, T>;

/// How far a result may be from volux_core's reading: a short is rounded, a float has 24 bits, and
/// a library has a tolerance of its own.
template <class Result>
constexpr double tolerance(double own)
{
    return std::is_same_v<Result, short>   ? 0.5 + own
           : std::is_same_v<Result, float> ? kLargestVoxel * 0x1p-24 + own
                                           : own;
}

/// A library that offers one position per call, in a loop.
template <class Sampler, class T, class Target>
class Looped {
public:
    static constexpr bool kComparable = Sampler::kComparable;
    using Result = Written<T, Target>;
    static constexpr double kTolerance = tolerance<Result>(Sampler::kTolerance);

    Looped(const Source<T>& source, const Target& target)
        : sampler_(source), target_(target), result_(count(target))
    {
    }

    void run() { fill(target_); }

    const Result* result() const { return result_.data(); }

private:
    void fill(const Positions& positions)
    {
        for (std::size_t n = 0; n < positions.size(); ++n) {
            result_[n] = sampled(positions[n].x, positions[n].y, positions[n].z);
        }
    }

    void fill(const Grid& grid)
    {
        const auto& rows = grid.map.rows;
        Result* place = result_.data();
        for (unsigned int k = 0; k < grid.depth; ++k) {
            for (unsigned int j = 0; j < grid.height; ++j) {
                const Point row = {rows[0][3] + rows[0][2] * k + rows[0][1] * j,
                                   rows[1][3] + rows[1][2] * k + rows[1][1] * j,
                                   rows[2][3] + rows[2][2] * k + rows[2][1] * j};
                for (unsigned int i = 0; i < grid.width; ++i) {
                    *place++ = sampled(row.x + rows[0][0] * i, row.y + rows[1][0] * i,
                                       row.z + rows[2][0] * i);
                }
            }
        }
    }

    // No reading of these voxels leaves a short.
    Result sampled(double x, double y, double z) const
    {
        const auto reading = sampler_(x, y, z);
        if constexpr (std::is_integral_v<Result> && !std::is_integral_v<decltype(reading)>) {
            return static_cast<Result>(reading + (reading < 0 ? -0.5F : 0.5F));
        } else {
            return static_cast<Result>(reading);
        }
    }

    const Sampler sampler_;
    const Target& target_;
    std::vector<Result> result_;
};

/// Each case has carried out its work once before it is timed.
inline int serveBulk(int argc, char** argv)
{
    constexpr bool kWarmsUp = true;
    return serve(argc, argv, kWarmsUp);
}

}  // namespace volux::bench
