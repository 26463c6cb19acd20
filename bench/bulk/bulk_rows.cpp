// What four rows of voxels take to read at random positions, with next to nothing computed: the
// share of the memory in what a trilinear sample takes.
#include "Bulk.h"

namespace volux::bench {
namespace {

template <class T>
class RowsAlone {
public:
    static constexpr bool kComparable = false;
    static constexpr double kTolerance = 0.0;

    explicit RowsAlone(const Source<T>& source)
        : voxels_(source.data()), extent_(source.extent), slice_(source.extent * source.extent)
    {
    }

    double operator()(double x, double y, double z) const
    {
        const T* const first = voxels_ + lower(x) + lower(y) * extent_ + lower(z) * slice_;
        return static_cast<double>(first[0] + first[extent_] + first[slice_] +
                                   first[slice_ + extent_]);
    }

private:
    int lower(double position) const
    {
        return std::clamp(static_cast<int>(position), 0, extent_ - 2);
    }

    const T* voxels_;
    int extent_;
    int slice_;
};

template <class T, Kernel, Outside, class Target>
using Bulk = Looped<RowsAlone<T>, T, Target>;

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    bench::addKernel<bench::Bulk, bench::RandomPositions, bench::Kernel::kLinear>("rows");
    return bench::serveBulk(argc, argv);
}
