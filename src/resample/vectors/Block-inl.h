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

#include <algorithm>

#include "Block.h"
#include "OneSample.h"
#include "RowReader-inl.h"
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

template <class T, Kernel K, bool Contiguous>
class LaneReader {
public:
    LaneReader(const Channel& channel, const Outside& outside)
        : channel_(channel),
          outside_(outside.value),
          isConstant_(outside.isConstant),
          x_(channel.x),
          y_(channel.y),
          z_(channel.z)
    {
    }

    Real operator()(Real x, Real y, Real z) const
    {
        const At at = {Axes(x), Axes(y), Axes(z)};
        return isConstant_ && !allTrue(insideAll(at)) ? read<true>(at) : read<false>(at);
    }

private:
    static constexpr int kReach = reach(K);

    using Axes = Neighbours<K, Real>;
    struct At {
        Axes x;
        Axes y;
        Axes z;
    };

    Mask insideAll(const At& at) const
    {
        return hn::And(hn::And(allInside<K>(x_, at.x.first), allInside<K>(y_, at.y.first)),
                       allInside<K>(z_, at.z.first));
    }

    // Masked: where a neighbour is outside, the constant takes its place.
    template <bool Masked>
    Real read(const At& at) const
    {
        const RowReader<T, K, Contiguous> reader(x_, at.x.first);
        Real row[kReach];
        const auto rows = [&](int j, int k) {
            const Real y = offset(at.y.first, j);
            const Real z = offset(at.z.first, k);
            reader.read(channel_, hn::Add(z_.bytes(z), y_.bytes(y)), row);
            if constexpr (Masked) {
                const Mask rowInside = hn::And(z_.holds(z), y_.holds(y));
                for (int i = 0; i < kReach; ++i) {
                    const Mask inside = hn::And(rowInside, x_.holds(offset(at.x.first, i)));
                    row[i] = select(inside, row[i], Real(outside_));
                }
            }
            return [&row](int i) { return row[i]; };
        };
        if constexpr (K == Kernel::NEAREST) {
            return rows(0, 0)(0);
        } else {
            return weightedSum<WeightedSum<K, Real>>(at.x.weights, at.y.weights, at.z.weights,
                                                     rows);
        }
    }

    const Channel& channel_;
    const double outside_;
    const bool isConstant_;
    const RealAxis x_;
    const RealAxis y_;
    const RealAxis z_;
};

// Where indices need no care in 32 bits; NaN is not near.
inline bool allNear(Real x, Real y, Real z)
{
    const auto near = [&](Real position) { return Real(hn::Abs(position.lanes)) <= Real(kNear); };
    return allTrue(hn::And(hn::And(near(x), near(y)), near(z)));
}

template <class T, Kernel K>
void readOneByOne(const Channel& channel, const Outside& outside, Block& block, std::size_t first,
                  std::size_t end)
{
    for (std::size_t n = first; n < end; ++n) {
        block.readings[n] = readOne<T, K>(channel, outside, block.x[n], block.y[n], block.z[n]);
    }
}

template <class T, Kernel K, bool Contiguous>
void readLanes(const Channel& channel, const Outside& outside, Block& block)
{
    const LaneReader<T, K, Contiguous> reader(channel, outside);
    const std::size_t lanes = hn::Lanes(Doubles());
    for (std::size_t n = 0; n < block.count; n += lanes) {
        const Real x = load(block.x + n);
        const Real y = load(block.y + n);
        const Real z = load(block.z + n);
        if (HWY_LIKELY(allNear(x, y, z))) {
            store(reader(x, y, z), block.readings + n);
        } else {
            readOneByOne<T, K>(channel, outside, block, n, std::min(n + lanes, block.count));
        }
    }
}

template <class T, Kernel K>
void readWith(const Channel& channel, const Outside& outside, Block& block)
{
    // One lane is slower than no lanes at all.
    if (!haveWords(channel, sizeof(T)) || HWY_TARGET == HWY_SCALAR) {
        readOneByOne<T, K>(channel, outside, block, 0, block.count);
    } else if (isContiguous<T>(channel)) {
        readLanes<T, K, true>(channel, outside, block);
    } else {
        readLanes<T, K, false>(channel, outside, block);
    }
}

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
