// Blocks of samples by Linear and Cubic, one sample in each lane, for the instruction set that
// Highway is compiling. No sum crosses lanes.
#if defined(VOLUX_RESAMPLE_WEIGHTED) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_WEIGHTED
#undef VOLUX_RESAMPLE_WEIGHTED
#else
#define VOLUX_RESAMPLE_WEIGHTED
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "Interior-inl.h"
#include "LaneRows-inl.h"
#include "OneSample.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// What is made of the neighbours of a vector of samples, and where it is kept: the readings alone,
// by what Made makes of weights and rows.
template <Kernel K, class Made>
struct ReadingAlone {
    using Room = Block;
    using Result = Real;

    // `read(j, k, row)` gives a row of neighbours.
    template <class Read>
    static HWY_INLINE Real of(const Reals& positions, const Read& read)
    {
        const Neighbours<K, Real> xs(positions.x);
        const Neighbours<K, Real> ys(positions.y);
        const Neighbours<K, Real> zs(positions.z);
        Real row[reach(K)];
        const auto rows = [&](int j, int k) HWY_ATTR {
            read(j, k, row);
            return [&row](int i) HWY_ATTR { return row[i]; };
        };
        return Made::of(xs.weights, ys.weights, zs.weights, rows, positions);
    }

    static HWY_INLINE void keep(Real reading, Block& block, std::size_t n)
    {
        store(reading, block.readings + n);
    }

    static void readOneByOne(const Channel& channel, const Outside& outside, Block& block,
                             std::size_t first, std::size_t end)
    {
        Made::readOneByOne(channel, outside, block, first, end);
    }
};

// Reads a block with all neighbours of kernel K; Formula says what becomes of them.
template <class T, Kernel K, Order O, class Formula = ReadingAlone<K, Summed<T, K>>>
class WeightedReader {
public:
    WeightedReader(const Channel& channel, const Outside& outside)
        : channel_(channel),
          outside_(outside),
          axes_(channel),
          rows_(channel.x.stride),
          interior_(channel, K, rows_.beyond())
    {
    }

    void operator()(typename Formula::Room& block) const
    {
        for (std::size_t n = 0; n < block.count; n += kLanes) {
            const Reals positions = positionsAt(block, n);
            const Reals firsts = firstNeighbours<K>(positions);
            if (HWY_LIKELY(interior_.holds(firsts))) {
                Formula::keep(readInterior(positions, firsts), block, n);
            } else if (allNear(positions)) {
                Formula::keep(readEdge(positions, firsts), block, n);
            } else {
                Formula::readOneByOne(channel_, outside_, block, n,
                                      std::min(n + kLanes, block.count));
            }
        }
    }

private:
    using Result = typename Formula::Result;
    static constexpr int kReach = reach(K);

    HWY_INLINE Result readInterior(const Reals& positions, const Reals& firsts) const
    {
        HWY_ALIGN std::int64_t offsets[kLanes];
        hn::Store(axes_.bytes(firsts), Offsets(), offsets);
        return Formula::of(positions, [&](int j, int k, Real(&row)[kReach]) HWY_ATTR {
            rows_.read(channel_.data + channel_.y.stride * j + channel_.z.stride * k, offsets, row);
        });
    }

    // The border applied in vectors. Neighbours that were copied first would have to arrive from
    // memory before the next vector could begin.
    HWY_NOINLINE Result readEdge(const Reals& positions, const Reals& firsts) const
    {
        const RowReader<T, K, O == Order::FORWARD> reader(axes_.x, firsts.x);
        return Formula::of(positions, [&](int j, int k, Real(&row)[kReach]) HWY_ATTR {
            const Real y = offset(firsts.y, j);
            const Real z = offset(firsts.z, k);
            const RealAxes& axes = axes_;
            reader.read(
                channel_,
                wholeNumber(axes.y.bytes(axes.y.within(y)) + axes.z.bytes(axes.z.within(z))), row);
            if (outside_.isConstant) {
                const Mask isRowInside = hn::And(axes.z.holds(z), axes.y.holds(y));
                for (int i = 0; i < kReach; ++i) {
                    const Mask isInside = axes.x.holds(offset(firsts.x, i));
                    row[i] = select(hn::And(isRowInside, isInside), row[i], Real(outside_.value));
                }
            }
        });
    }

    const Channel& channel_;
    const Outside& outside_;
    const RealAxes axes_;
    const LaneRows<T, K, O> rows_;
    const Interior interior_;
};

#endif

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
