// The nearest voxels of a block of samples, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_NEAREST) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_NEAREST
#undef VOLUX_RESAMPLE_NEAREST
#else
#define VOLUX_RESAMPLE_NEAREST
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cstring>

#include "Block.h"
#include "Interior-inl.h"
#include "OneSample.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Finds where all voxels of the block are, copies them one by one, which no vector does faster, and
// makes doubles of them.
template <class T>
class NearestReader {
public:
    NearestReader(const Channel& channel, const Outside& outside)
        : channel_(channel), outside_(outside), axes_(channel), interior_(channel, kKernel, 0.0)
    {
    }

    void operator()(Block& block)
    {
        const bool isInterior = find(block);
        copy(block.count);
        for (std::size_t n = 0; n < block.count; n += kLanes) {
            store(loadVoxels<T>(voxels_ + n), block.readings + n);
        }
        if (!isInterior) {
            mend(block);
        }
    }

private:
    static constexpr Kernel kKernel = Kernel::NEAREST;

    // Whether the brick holds all of them; if not, the nearest ones that it holds are found.
    bool find(const Block& block)
    {
        bool isInterior = true;
        for (std::size_t n = 0; n < block.count; n += kLanes) {
            const Reals voxels = firstNeighbours<kKernel>(positionsAt(block, n));
            const bool holds = interior_.holds(voxels);
            isInterior = isInterior && holds;
            const Offset bytes = axes_.bytes(HWY_LIKELY(holds) ? voxels : axes_.within(voxels));
            hn::Store(bytes, Offsets(), bytes_ + n);
        }
        return isInterior;
    }

    void copy(std::size_t count)
    {
        const unsigned char* const data = channel_.data;
        for (std::size_t n = 0; n < count; ++n) {
            std::memcpy(voxels_ + n, data + bytes_[n], sizeof(T));
        }
    }

    // Puts the constant outside, and what positions far from any image read.
    void mend(Block& block) const
    {
        for (std::size_t n = 0; n < block.count; n += kLanes) {
            const Reals positions = positionsAt(block, n);
            if (!allNear(positions)) {
                readOneByOne<T, kKernel>(channel_, outside_, block, n,
                                         std::min(n + kLanes, block.count));
            } else if (outside_.isConstant) {
                const Mask inside = axes_.holds(firstNeighbours<kKernel>(positions));
                store(select(inside, load(block.readings + n), Real(outside_.value)),
                      block.readings + n);
            }
        }
    }

    const Channel& channel_;
    const Outside& outside_;
    const RealAxes axes_;
    const Interior interior_;
    HWY_ALIGN std::int64_t bytes_[kRoom];
    HWY_ALIGN T voxels_[kRoom];
};

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
