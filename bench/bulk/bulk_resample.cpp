// volux_resample: on one thread with each instruction set.
#include <hwy/targets.h>

#include "Bulk.h"

namespace volux::bench {
namespace {

void useInstructions(std::int64_t targets)
{
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

template <class T, Kernel K, Outside O, class Target>
class Ours {
public:
    static constexpr bool kComparable = true;
    using Result = Written<T, Target>;
    static constexpr double kTolerance = tolerance<Result>(0.0);

    Ours(const Source<T>& source, const Target& target)
        : source_(source), target_(target), options_(Interpolator<K>(), Border<O>(), kOutsideValue)
    {
        options_.threads = 1;
        options_.edgeExtends = true;  // every position is read
        result_.resize(count(target));
        if constexpr (std::is_same_v<Target, Grid>) {
            place(target);
        } else if constexpr (std::is_same_v<Target, Warped>) {
            place(target.grid);
        }
    }

    void run()
    {
        if (call() != core::SUCCESS) {
            throw std::runtime_error("volux_resample refused");
        }
    }

    const Result* result() const { return result_.data(); }

private:
    void place(const Grid& grid)
    {
        image_.initializeWithPointer(result_.data(), grid.width, grid.height, grid.depth, 1);
    }

    core::ErrorType call()
    {
        if constexpr (std::is_same_v<Target, Grid>) {
            return resample::resample(source_.image(), target_, &image_, options_);
        } else if constexpr (std::is_same_v<Target, Warped>) {
            return resample::resample(source_.image(), target_.grid, target_.warp(), &image_,
                                      options_);
        } else {
            return resample::sample(source_.image(), target_.data(), target_.size(),
                                    resample::Units::VOXELS, 0, result_.data(), options_);
        }
    }

    const Wrapped<T> source_;
    const Target& target_;
    resample::Options options_;
    std::vector<Result> result_;
    core::VxImage<Result> image_;
};

template <std::int64_t Targets>
struct With {
    template <class T, Kernel K, Outside O, class Target>
    class Bulk : public Ours<T, K, O, Target> {
    public:
        Bulk(const Source<T>& source, const Target& target) : Ours<T, K, O, Target>(source, target)
        {
            useInstructions(Targets);
        }
    };
};

template <std::int64_t Targets>
void addInstructions(const std::string& name)
{
    if ((hwy::SupportedTargets() & Targets) != 0) {
        addBulk<With<Targets>::template Bulk>(name);
        addKernel<With<Targets>::template Bulk, WarpedVolume, Kernel::kLinear>(name);
    }
}

}  // namespace
}  // namespace volux::bench

int main(int argc, char** argv)
{
    namespace bench = volux::bench;
    bench::addInstructions<HWY_AVX3>("AVX-512");
    bench::addInstructions<HWY_AVX2>("AVX2");
    bench::addInstructions<HWY_SSE4>("SSE4");
    bench::addInstructions<HWY_SCALAR>("scalar");
    return bench::serveBulk(argc, argv);
}
