// Blocks of samples, one in each lane, for the instruction set that Highway is compiling. No sum
// crosses lanes. A vector that holds a position far from any image is left to readOne(), which
// knows how 32-bit indices wrap.
#if defined(VOLUX_RESAMPLE_BLOCK) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_BLOCK
#undef VOLUX_RESAMPLE_BLOCK
#else
#define VOLUX_RESAMPLE_BLOCK
#endif

#include <hwy/highway.h>

#include "Block.h"
#include "Nearest-inl.h"
#include "Weighted-inl.h"
#include "exact/ElementTypes.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// One loop for all three coordinates, which wait for one index instead of three.
inline void fillPositionsHere(Position start, Position step, unsigned int first, Block& block)
{
    const Real indices(hn::Iota(Doubles(), static_cast<double>(first)));
    for (std::size_t n = 0; n < block.count; n += hn::Lanes(Doubles())) {
        const Real index = offset(indices, static_cast<int>(n));
        store(along(Real(start.x), Real(step.x), index), block.x + n);
        store(along(Real(start.y), Real(step.y), index), block.y + n);
        store(along(Real(start.z), Real(step.z), index), block.z + n);
    }
}

#if HWY_TARGET != HWY_SCALAR

template <class T, Kernel K>
void readWith(const Channel& channel, const Outside& outside, Block& block)
{
    if (!haveWords(channel, sizeof(T))) {
        readOneByOne<T, K>(channel, outside, block, 0, block.count);
    } else if constexpr (K == Kernel::NEAREST) {
        NearestReader<T> reader(channel, outside);
        reader(block);
    } else {
        withOrder<T>(channel, [&](auto order) {
            WeightedReader<T, K, decltype(order)::value>(channel, outside)(block);
        });
    }
}

#else

// One lane is slower than no lanes at all.
template <class T, Kernel K>
void readWith(const Channel& channel, const Outside& outside, Block& block)
{
    readOneByOne<T, K>(channel, outside, block, 0, block.count);
}

#endif

inline void readBlockHere(const Channel& channel, Kernel kernel, const Outside& outside,
                          Block& block)
{
    exact::withElementType(channel.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        switch (kernel) {
            case Kernel::NEAREST:
                return readWith<T, Kernel::NEAREST>(channel, outside, block);
            case Kernel::LINEAR:
                return readWith<T, Kernel::LINEAR>(channel, outside, block);
            case Kernel::CUBIC:
                return readWith<T, Kernel::CUBIC>(channel, outside, block);
        }
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
