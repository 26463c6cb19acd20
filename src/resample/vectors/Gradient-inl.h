// Blocks of samples with their derivatives, one sample in each lane, for the instruction set that
// Highway is compiling.
#if defined(VOLUX_RESAMPLE_GRADIENT) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_GRADIENT
#undef VOLUX_RESAMPLE_GRADIENT
#else
#define VOLUX_RESAMPLE_GRADIENT
#endif

#include <hwy/highway.h>

#include "Gradient.h"
#include "OneGradient.h"
#include "Weighted-inl.h"
#include "exact/ElementTypes.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

#include "Slopes.inc"

// The reading, and what its rows tell of the derivatives while they are there.
template <class T, Kernel K>
struct ReadingWithSlopes {
    using Room = GradientBlock;
    struct Result {
        Real reading;
        Gradient<Real> slopes;
    };

    template <class Read>
    static HWY_INLINE Result of(const Reals& positions, const Read& read)
    {
        Slopes<K, Real> slopes(positions.x, positions.y, positions.z);
        Real row[reach(K)];
        const auto rows = [&](int j, int k) HWY_ATTR {
            read(j, k, row);
            slopes.add(row, j, k);
            return [&row](int i) HWY_ATTR { return row[i]; };
        };
        const Real reading = weightedSum<WeightedSum<K, Real>>(
            slopes.x().weights, slopes.y().weights, slopes.z().weights, rows);
        return {reading, slopes.result(reading)};
    }

    static HWY_INLINE void keep(const Result& result, GradientBlock& block, std::size_t n)
    {
        store(result.reading, block.readings + n);
        store(result.slopes.x, block.slopesX + n);
        store(result.slopes.y, block.slopesY + n);
        store(result.slopes.z, block.slopesZ + n);
    }

    static void readOneByOne(const Channel& channel, const Outside& outside, GradientBlock& block,
                             std::size_t first, std::size_t end)
    {
        gradientsOneByOne<T, K>(channel, outside, block, first, end);
    }
};

#endif

template <class T, Kernel K>
void readGradientsWith(const Channel& channel, const Outside& outside, GradientBlock& block)
{
#if HWY_TARGET != HWY_SCALAR
    if (haveWords(channel, sizeof(T))) {
        return withOrder<T>(channel, [&](auto order) {
            using Reader = WeightedReader<T, K, decltype(order)::value, ReadingWithSlopes<T, K>>;
            Reader(channel, outside)(block);
        });
    }
#endif
    gradientsOneByOne<T, K>(channel, outside, block, 0, block.count);
}

inline void readGradientsHere(const Channel& channel, Kernel kernel, const Outside& outside,
                              GradientBlock& block)
{
    exact::withElementType(channel.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        if (kernel == Kernel::LINEAR) {
            readGradientsWith<T, Kernel::LINEAR>(channel, outside, block);
        } else {
            readGradientsWith<T, Kernel::CUBIC>(channel, outside, block);
        }
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
