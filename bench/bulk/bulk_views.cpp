// What a view and results of another type cost beside an image and results of its own: one thread,
// the best instruction set.
#include "Bulk.h"

namespace volux::bench {
namespace {

// The same memory, its rows and columns backwards.
resample::View<const short> flipped(resample::View<const short> view)
{
    view.data += view.strideX * (view.width - 1) + view.strideY * (view.height - 1);
    view.strideX = -view.strideX;
    view.strideY = -view.strideY;
    return view;
}

template <class R, class Workload>
void measure(benchmark::State& state, resample::Options options, bool isFlipped)
{
    static const Grid grid = Workload::target();
    const Wrapped<short> wrapped(source<short, Workload::kExtent>());
    const resample::View<const short> image = resample::viewOf(wrapped.image());
    const resample::View<const short> from = isFlipped ? flipped(image) : image;
    std::vector<R> results(count(grid));
    const resample::View<R> to(results.data(), grid.width, grid.height, grid.depth);
    options.threads = 1;
    options.edgeExtends = true;  // every position is read
    const auto run = [&] {
        if (resample::resample(from, grid, to, options) != core::SUCCESS) {
            throw std::runtime_error("volux_resample refused");
        }
    };
    run();
    for (auto _ : state) {
        run();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count(grid)));
}

template <class R, class Workload>
void add(const std::string& kernel, const std::string& name, const resample::Options& options,
         bool isFlipped)
{
    const std::string row = std::string("views/") + Workload::kName + '/' + kernel + '/' + name;
    benchmark::RegisterBenchmark(row.c_str(), [=](benchmark::State& state) {
        measure<R, Workload>(state, options, isFlipped);
    })->MeasureProcessCPUTime();
}

template <class Workload>
void addViews(const std::string& kernel, const resample::Options& options)
{
    add<short, Workload>(kernel, "image", options, false);
    add<short, Workload>(kernel, "flipped", options, true);
    add<float, Workload>(kernel, "into float", options, false);
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
        bench::addViews<bench::ObliqueVolume>(name, options);
        bench::addViews<bench::UpsampledVolume>(name, options);
    }
    return bench::serveBulk(argc, argv);
}
