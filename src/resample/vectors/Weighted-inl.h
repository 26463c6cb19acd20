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

template <class T, Kernel K, Order O>
class WeightedReader {
public:
    WeightedReader(const Channel& channel, const Outside& outside)
        : channel_(channel),
          outside_(outside),
          axes_(channel),
          rows_(channel.x.stride),
          interior_(channel, K, rows_.beyond())
    {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            copies_[lane] = static_cast<std::int64_t>(lane * kNeighbours * sizeof(T));
        }
    }

    void operator()(Block& block) const
    {
        for (std::size_t n = 0; n < block.count; n += kLanes) {
            const Reals positions = positionsAt(block, n);
            const Reals firsts = firstNeighbours<K>(positions);
            if (HWY_LIKELY(interior_.holds(firsts))) {
                store(readInterior(positions, firsts), block.readings + n);
            } else if (allNear(positions)) {
                store(readCopies(positions, block, n), block.readings + n);
            } else {
                readOneByOne<T, K>(channel_, outside_, block, n, std::min(n + kLanes, block.count));
            }
        }
    }

private:
    static constexpr std::size_t kReach = static_cast<std::size_t>(reach(K));
    static constexpr std::size_t kNeighbours = kReach * kReach * kReach;

    HWY_INLINE Real readInterior(const Reals& positions, const Reals& firsts) const
    {
        HWY_ALIGN std::int64_t offsets[kLanes];
        hn::Store(axes_.bytes(firsts), Offsets(), offsets);
        return sum(positions, rows_, channel_.data, channel_.y.stride, channel_.z.stride, offsets);
    }

    HWY_NOINLINE Real readCopies(const Reals& positions, const Block& block, std::size_t n) const
    {
        constexpr std::int64_t kRow = kReach * sizeof(T);
        HWY_ALIGN T copies[kLanes * kNeighbours + kWordBytes];  // words pass the end
        for (std::size_t lane = 0; lane < kLanes && n + lane < block.count; ++lane) {
            copyNeighbours<T, K>(channel_, outside_, block.x[n + lane], block.y[n + lane],
                                 block.z[n + lane], copies + lane * kNeighbours);
        }
        const LaneRows<T, K, Order::FORWARD> rows(sizeof(T));
        return sum(positions, rows, reinterpret_cast<const unsigned char*>(copies), kRow,
                   kRow * kReach, copies_);
    }

    template <class Rows>
    static HWY_INLINE Real sum(const Reals& positions, const Rows& rows, const unsigned char* data,
                               std::int64_t strideY, std::int64_t strideZ,
                               const std::int64_t* offsets)
    {
        const Neighbours<K, Real> xs(positions.x);
        const Neighbours<K, Real> ys(positions.y);
        const Neighbours<K, Real> zs(positions.z);
        Real row[kReach];
        const auto read = [&](int j, int k) HWY_ATTR {
            rows.read(data + strideY * j + strideZ * k, offsets, row);
            return [&row](int i) HWY_ATTR { return row[i]; };
        };
        return weightedSum<WeightedSum<K, Real>>(xs.weights, ys.weights, zs.weights, read);
    }

    const Channel& channel_;
    const Outside& outside_;
    const RealAxes axes_;
    const LaneRows<T, K, O> rows_;
    const Interior interior_;
    HWY_ALIGN std::int64_t copies_[kLanes];  // where each lane's neighbours are copied to
};

#endif

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
