// volux_resample: on one thread with each instruction set, and on two.
#include <hwy/targets.h>

#include "Bulk.h"

namespace volux::bench {
namespace {

template <class T, std::int64_t Targets, unsigned int Threads>
class Bulk {
public:
    static constexpr double kTolerance = std::is_same_v<T, short> ? 0.5 : 1e-3;  // the rounding

    Bulk(const Job& job, const Volume<T>& source, Kernel kernel, Outside outside)
        : job_(job), source_(source), options_(optionsOf(kernel, outside))
    {
        hwy::SetSupportedTargetsForTest(Targets);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
        options_.threads = Threads;
    }

    void run()
    {
        if (resample::resample(source_.image, job_.grid, &result_, options_) != core::SUCCESS) {
            throw std::runtime_error("volux_resample refused");
        }
    }

    const T* result() const { return result_.getBufferPointer(); }

private:
    const Job& job_;
    const Volume<T>& source_;
    resample::Options options_;
    core::VxImage<T> result_;
};

// 0: whatever the processor has.
template <class T>
using Best = Bulk<T, 0, 1>;
template <class T>
using OnTwoThreads = Bulk<T, 0, 2>;
template <class T>
using Avx2 = Bulk<T, HWY_AVX2 | HWY_SCALAR, 1>;
template <class T>
using Scalar = Bulk<T, HWY_SCALAR, 1>;

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    bench::addLibrary<bench::Best>("volux_resample");
    bench::addLibrary<bench::OnTwoThreads>("volux_resample on two threads");
    bench::addLibrary<bench::Avx2>("volux_resample with AVX2");
    bench::addLibrary<bench::Scalar>("volux_resample without SIMD");
    return bench::serve(argc, argv);
}
