// volux_resample: one call per position of a sampler that is made before the loop.
#include <volux/resample.h>

#include "Sampling.h"

namespace volux::bench {
namespace {

template <class T, Kernel K, Outside O>
class MadeSampler {
public:
    static constexpr bool kComparable = true;
    static constexpr double kTolerance = 0.0;

    explicit MadeSampler(const Source<T>& source) : sampler_(viewOf(source), options()) {}

    double operator()(double x, double y, double z) const { return sampler_(x, y, z); }

private:
    static resample::View<const T> viewOf(const Source<T>& source)
    {
        const auto extent = static_cast<unsigned int>(source.extent);
        return {source.data(), extent, extent, extent};
    }
    static resample::Options options() { return {Interpolator<K>(), Border<O>(), kOutsideValue}; }

    resample::Sampler sampler_;
};

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    volux::bench::addLibrary<volux::bench::MadeSampler>("Sampler");
    return volux::bench::serve(argc, argv);
}
