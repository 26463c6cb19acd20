// How volux_resample grows with the size of a volume and with threads, beside a copy of the same
// bytes; by the clock on the wall, with the best instruction set.
#include <cstring>
#include <map>

#include "Bulk.h"

namespace volux::bench {
namespace {

using Image = core::VxImage<short>;

// Some slices in the middle of a large volume are enough.
constexpr unsigned int kMostSamples = 1U << 24U;

/// A cube, made when it is first asked for.
Image& cube(unsigned int extent)
{
    static std::map<unsigned int, Image> made;
    Image& image = made[extent];
    if (image.getBufferPointer() == nullptr) {
        image.initialize(extent, extent, extent, 1);
        const std::size_t count = std::size_t{extent} * extent * extent;
        for (std::size_t i = 0; i < count; ++i) {
            image.getBufferPointer()[i] = static_cast<short>(i * 40503 % 65521 % 2600);
        }
    }
    return image;
}

struct Size {
    unsigned int extent;
    unsigned int depth;

    explicit Size(unsigned int wanted)
        : extent(wanted), depth(std::min(wanted, kMostSamples / (wanted * wanted)))
    {
    }

    std::size_t samples() const { return std::size_t{extent} * extent * depth; }
    unsigned int firstSlice() const { return (extent - depth) / 2; }
};

Grid oblique(const Size& size)
{
    const Grid whole =
        turnedGrid(static_cast<int>(size.extent), 0.9, size.extent, size.extent, size.extent);
    return slices(whole, size.firstSlice(), size.depth);
}

// Its voxels are between those of the source, on every axis.
Grid shifted(const Size& size)
{
    Grid grid;
    grid.width = size.extent;
    grid.height = size.extent;
    grid.map = {{{0.97, 0, 0, 0.3}, {0, 0.97, 0, 0.3}, {0, 0, 0.97, 0.3}}};
    return slices(grid, size.firstSlice(), size.depth);
}

void measure(benchmark::State& state, Image& source, const Grid& grid, resample::Options options,
             unsigned int threads)
{
    options.threads = threads;
    options.edgeExtends = true;  // every position is read
    Image result;
    const auto run = [&] {
        if (resample::resample(source, grid, &result, options) != core::SUCCESS) {
            throw std::runtime_error("volux_resample refused");
        }
    };
    run();
    for (auto _ : state) {
        run();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count(grid)));
}

void measureCopy(benchmark::State& state, const Size& size)
{
    const short* const from =
        cube(size.extent).getBufferPointer() + size.samples() / size.depth * size.firstSlice();
    std::vector<short> to(size.samples());
    const auto run = [&] { std::memcpy(to.data(), from, to.size() * sizeof(short)); };
    run();
    for (auto _ : state) {
        run();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(size.samples()));
}

template <class Measure>
void add(const std::string& name, Measure measure)
{
    benchmark::RegisterBenchmark(name.c_str(), measure)->UseRealTime();
}

void addThreads(const std::string& row, unsigned int extent, const Grid& grid,
                const resample::Options& options)
{
    for (const unsigned int threads : {1U, 2U}) {
        add(row + (threads == 1 ? "/one thread" : "/two threads"),
            [=](benchmark::State& state) { measure(state, cube(extent), grid, options, threads); });
    }
}

template <class Workload>
void addWorkloadThreads(const std::string& name, const resample::Options& options)
{
    addThreads(std::string("threads/") + Workload::kName + '/' + name, Workload::kExtent,
               Workload::target(), options);
}

void addSize(unsigned int extent)
{
    const Size size(extent);
    const auto row = [extent](const char* what) {
        return "growth/" + std::string(what) + '/' + std::to_string(extent);
    };
    addThreads(row("oblique, nearest"), extent, oblique(size), core::NearestNeighbor());
    addThreads(row("oblique, linear"), extent, oblique(size), core::Linear());
    addThreads(row("along the axes, linear"), extent, shifted(size), core::Linear());
    add(row("copy") + "/memcpy", [size](benchmark::State& state) { measureCopy(state, size); });
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    const std::pair<const char*, volux::resample::Options> kernels[] = {
        {"nearest", volux::core::NearestNeighbor()},
        {"linear", volux::core::Linear()},
        {"cubic", volux::core::Cubic()}};
    for (const auto& [name, options] : kernels) {
        bench::addWorkloadThreads<bench::ObliqueVolume>(name, options);
        bench::addWorkloadThreads<bench::UpsampledVolume>(name, options);
    }
    for (const unsigned int extent : {32U, 64U, 128U, 256U, 512U, 1024U}) {
        bench::addSize(extent);
    }
    return bench::serveBulk(argc, argv);
}
