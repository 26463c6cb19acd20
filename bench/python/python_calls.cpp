// The calls that those of Python are compared with: volux_resample by the wall clock, into memory
// that the caller has.
#include <cstring>

#include "../bulk/Bulk.h"

namespace volux::bench {
namespace {

// A sum over the bits of all results in their order, as bench/python/volumes.py forms it.
template <class T>
double checksum(const std::vector<T>& results)
{
    using Bits = std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint32_t>;
    std::uint32_t sum = 0;
    std::uint32_t place = 0;
    for (const T& result : results) {
        Bits bits;
        std::memcpy(&bits, &result, sizeof bits);
        sum += bits * ++place;
    }
    return sum;
}

template <class T, class Workload>
void measure(benchmark::State& state, const resample::Options& options)
{
    static const Grid grid = Workload::target();
    const Wrapped<T> wrapped(source<T, Workload::kExtent>());
    std::vector<T> results(count(grid));
    core::VxImage<T> image;
    image.initializeWithPointer(results.data(), grid.width, grid.height, grid.depth, 1);
    const auto run = [&] {
        if (resample::resample(wrapped.image(), grid, &image, options) != core::SUCCESS) {
            throw std::runtime_error("volux_resample refused");
        }
    };
    run();
    for (auto _ : state) {
        run();
    }
    state.counters["checksum"] = checksum(results);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count(grid)));
}

template <class Workload, class T>
void add(const std::string& row, resample::Options options)
{
    options.edgeExtends = true;  // every position is read
    for (const unsigned int threads : {1U, 2U}) {
        options.threads = threads;
        const std::string name = row + std::to_string(threads) + "/volux_resample";
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
            measure<T, Workload>(state, options);
        })->UseRealTime();
    }
}

template <class Workload, Outside O>
void addCalls()
{
    const std::pair<const char*, core::Interpolator*> kernels[] = {
        {"nearest", &core::InterpolationType::NEAREST_NEIGHBOR},
        {"linear", &core::InterpolationType::LINEAR},
        {"cubic", &core::InterpolationType::CUBIC}};
    for (const auto& [kernel, interpolator] : kernels) {
        const std::string row = std::string("/") + kernel + "/";
        const resample::Options options(interpolator, Border<O>(), kOutsideValue);
        add<Workload, short>(std::string(Workload::kName) + "/short" + row, options);
        add<Workload, float>(std::string(Workload::kName) + "/float" + row, options);
    }
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    bench::addCalls<bench::ObliqueVolume, bench::Outside::kConstant>();
    bench::addCalls<bench::UpsampledVolume, bench::Outside::kReplication>();
    return bench::serveBulk(argc, argv);
}
