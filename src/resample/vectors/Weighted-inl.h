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

// Reads a block with all neighbours of kernel K; Made says what becomes of them.
template <class T, Kernel K, Order O, class Made = Summed<T, K>>
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

    void operator()(Block& block) const
    {
        for (std::size_t n = 0; n < block.count; n += kLanes) {
            const Reals positions = positionsAt(block, n);
            const Reals firsts = firstNeighbours<K>(positions);
            if (HWY_LIKELY(interior_.holds(firsts))) {
                store(readInterior(positions, firsts), block.readings + n);
            } else if (allNear(positions)) {
                store(readEdge(positions, firsts), block.readings + n);
            } else {
                Made::readOneByOne(channel_, outside_, block, n, std::min(n + kLanes, block.count));
            }
        }
    }

private:
    static constexpr int kReach = reach(K);

    HWY_INLINE Real readInterior(const Reals& positions, const Reals& firsts) const
    {
        HWY_ALIGN std::int64_t offsets[kLanes];
        hn::Store(axes_.bytes(firsts), Offsets(), offsets);
        return sum(positions, [&](int j, int k, Real(&row)[kReach]) HWY_ATTR {
            rows_.read(channel_.data + channel_.y.stride * j + channel_.z.stride * k, offsets, row);
        });
    }

    // The border applied in vectors. Neighbours that were copied first would have to arrive from
    // memory before the next vector could begin.
    HWY_NOINLINE Real readEdge(const Reals& positions, const Reals& firsts) const
    {
        const RowReader<T, K, O == Order::FORWARD> reader(axes_.x, firsts.x);
        return sum(positions, [&](int j, int k, Real(&row)[kReach]) HWY_ATTR {
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

    // `read(j, k, row)` gives a row of neighbours.
    template <class Read>
    static HWY_INLINE Real sum(const Reals& positions, const Read& read)
    {
        const Neighbours<K, Real> xs(positions.x);
        const Neighbours<K, Real> ys(positions.y);
        const Neighbours<K, Real> zs(positions.z);
        Real row[kReach];
        const auto rows = [&](int j, int k) HWY_ATTR {
            read(j, k, row);
            return [&row](int i) HWY_ATTR { return row[i]; };
        };
        return Made::of(xs.weights, ys.weights, zs.weights, rows, positions);
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
