// What derivatives cost beside readings alone: one thread, the best instruction set.
#include "Bulk.h"

namespace volux::bench {
namespace {

template <class Workload>
Positions positionsOf()
{
    if constexpr (std::is_same_v<Workload, RandomPositions>) {
        return RandomPositions::target();
    } else {
        const Grid grid = Workload::target();
        Positions all;
        for (std::size_t n = 0; n < count(grid); ++n) {
            all.push_back(position(grid, n));
        }
        return all;
    }
}

template <class T, class Workload, class Result, class Call>
void measure(benchmark::State& state, const resample::Options& options, const Call& call)
{
    static const Positions positions = positionsOf<Workload>();
    const Wrapped<T> wrapped(source<T, Workload::kExtent>());
    std::vector<Result> results(positions.size());
    const auto run = [&] {
        if (call(wrapped.image(), positions.data(), positions.size(), results.data(), options) !=
            core::SUCCESS) {
            throw std::runtime_error("volux_resample refused");
        }
    };
    run();
    for (auto _ : state) {
        run();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(positions.size()));
}

template <class T, class Workload>
void add(const std::string& row, resample::Options options)
{
    using resample::Units;
    options.threads = 1;
    const auto read = [](auto& image, auto* at, auto count, auto* results, auto& how) {
        return resample::sample(image, at, count, Units::VOXELS, 0, results, how);
    };
    const auto derive = [](auto& image, auto* at, auto count, auto* results, auto& how) {
        return resample::sampleGradient(image, at, count, Units::VOXELS, 0, results, how);
    };
    benchmark::RegisterBenchmark((row + "/reading").c_str(), [=](benchmark::State& state) {
        measure<T, Workload, double>(state, options, read);
    })->MeasureProcessCPUTime();
    benchmark::RegisterBenchmark((row + "/gradient").c_str(), [=](benchmark::State& state) {
        measure<T, Workload, resample::ReadingAndGradient>(state, options, derive);
    })->MeasureProcessCPUTime();
}

template <class Workload>
void addGradients(const std::string& kernel, const resample::Options& options)
{
    const std::string row = std::string("gradients/") + Workload::kName + '/';
    add<short, Workload>(row + "short/" + kernel, options);
    add<float, Workload>(row + "float/" + kernel, options);
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    const std::pair<const char*, volux::resample::Options> kernels[] = {
        {"linear", volux::core::Linear()}, {"cubic", volux::core::Cubic()}};
    for (const auto& [name, options] : kernels) {
        bench::addGradients<bench::ObliqueVolume>(name, options);
        bench::addGradients<bench::RandomPositions>(name, options);
    }
    return bench::serveBulk(argc, argv);
}
