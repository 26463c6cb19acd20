// Labels beside the other kernels, and beside one linear volume for each label: one thread, the
// best instruction set.
#include "LabelMap.h"

namespace volux::bench {
namespace {

template <class R>
void resampleOnce(const core::VxImage<short>& from, const Grid& grid, std::vector<R>& results,
                  resample::Options options)
{
    options.threads = 1;
    options.edgeExtends = true;  // every position is read
    const resample::View<R> to(results.data(), grid.width, grid.height, grid.depth);
    if (resample::resample(from, grid, to, options) != core::SUCCESS) {
        throw std::runtime_error("volux_resample refused");
    }
}

/// The greatest of one linear volume for each label.
void readEachLabel(const Source<short>& source, short labels, const Grid& grid,
                   std::vector<short>& results)
{
    std::vector<float> greatest(count(grid), -1.0F);
    std::vector<float> weights(count(grid));
    Source<short> share = {source.extent, std::vector<short>(source.voxels.size())};
    for (short label = 0; label < labels; ++label) {
        std::transform(source.voxels.begin(), source.voxels.end(), share.voxels.begin(),
                       [label](short voxel) { return static_cast<short>(voxel == label); });
        resampleOnce(Wrapped<short>(share).image(), grid, weights, core::Linear());
        for (std::size_t n = 0; n < weights.size(); ++n) {
            if (weights[n] > greatest[n]) {
                greatest[n] = weights[n];
                results[n] = label;
            }
        }
    }
}

template <class Workload, class Map, class Run>
void add(const std::string& name, const Run& run)
{
    const auto measured = [run](benchmark::State& state) {
        static const Grid grid = Workload::target();
        std::vector<short> results(count(grid));
        run(grid, results);
        for (auto _ : state) {
            run(grid, results);
        }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count(grid)));
    };
    benchmark::RegisterBenchmark(labelsRow<Workload, Map>(name).c_str(), measured)
        ->MeasureProcessCPUTime();
}

template <class Workload, class Map>
void addMap(const resample::Subsamples& subsamples)
{
    const std::pair<const char*, resample::Options> kernels[] = {
        {"nearest", core::NearestNeighbor()},
        {"linear", core::Linear()},
        {"Labels", resample::Labels()}};
    for (const auto& [name, kernel] : kernels) {
        resample::Options options = kernel;
        options.subsamples = subsamples;
        add<Workload, Map>(name, [options](const Grid& grid, std::vector<short>& results) {
            const Wrapped<short> wrapped(labels<Map, Workload::kExtent>());
            resampleOnce(wrapped.image(), grid, results, options);
        });
    }
}

template <class Workload, class Map>
void addEachLabel()
{
    add<Workload, Map>("each label", [](const Grid& grid, std::vector<short>& results) {
        readEachLabel(labels<Map, Workload::kExtent>(), Map::kLabels, grid, results);
    });
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    bench::addMap<bench::ObliqueVolume, bench::Regions>({});
    bench::addMap<bench::ObliqueVolume, bench::Noise>({});
    bench::addMap<bench::UpsampledVolume, bench::Regions>({});
    bench::addMap<bench::UpsampledVolume, bench::Noise>({});
    bench::addMap<bench::Reduced, bench::Regions>(volux::resample::kAntialiased);
    bench::addMap<bench::Reduced, bench::Noise>(volux::resample::kAntialiased);
    bench::addEachLabel<bench::ObliqueVolume, bench::Regions>();
    bench::addEachLabel<bench::UpsampledVolume, bench::Regions>();
    return bench::serveBulk(argc, argv);
}
