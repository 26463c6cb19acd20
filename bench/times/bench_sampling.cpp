// volux_core: one call per position, both policies chosen at compile time and made before the loop.
#include <type_traits>

#include "Sampling.h"

namespace volux::bench {
namespace {

template <class T, Kernel K, Outside O>
class Module {
public:
    static constexpr bool kComparable = true;
    // A short is a rounded reading; the other is the reading that it is compared with.
    static constexpr double kTolerance = std::is_same_v<T, short> ? 0.5 : 0.0;

    explicit Module(const Source<T>& source) : wrapped_(source) {}

    auto operator()(double x, double y, double z) const
    {
        if constexpr (std::is_same_v<T, short>) {
            return wrapped_.image().template getValueVoxel<Interpolator<K>, Border<O>>(
                x, y, z, 0, interpolator_, border_, T{kOutsideValue});
        } else {
            return wrapped_.image().template getDoubleValueReal<Interpolator<K>, Border<O>>(
                x, y, z, 0, interpolator_, border_, T{kOutsideValue});
        }
    }

private:
    Wrapped<T> wrapped_;
    Interpolator<K> interpolator_;
    Border<O> border_;
};

// What each sample's time contains besides the sample.
template <class Workload>
void measureLoop(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(Workload::sum([](double x, double y, double z) {
            benchmark::DoNotOptimize(x);
            benchmark::DoNotOptimize(y);
            benchmark::DoNotOptimize(z);
            return x;
        }));
    }
    state.SetItemsProcessed(state.iterations() * Workload::kSamples);
}

template <class Workload>
void addLoop()
{
    benchmark::RegisterBenchmark((std::string(Workload::kName) + "/positions/loop").c_str(),
                                 measureLoop<Workload>);
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    bench::addLibrary<bench::Module>("volux_core");
    bench::addLoop<bench::Oblique>();
    bench::addLoop<bench::Upsampling>();
    bench::addLoop<bench::Scattered>();
    bench::addLoop<bench::Chain>();
    return bench::serve(argc, argv);
}
