// Samples whose neighbours the brick holds, all of them: one test for a whole vector, and plain
// sums of bytes, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_INTERIOR) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_INTERIOR
#undef VOLUX_RESAMPLE_INTERIOR
#else
#define VOLUX_RESAMPLE_INTERIOR
#endif

#include <hwy/highway.h>

#include "Block.h"
#include "RowReader-inl.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

inline Reals positionsAt(const Block& block, std::size_t n)
{
    return {load(block.x + n), load(block.y + n), load(block.z + n)};
}

template <Kernel K>
inline Reals firstNeighbours(const Reals& positions)
{
    return {firstNeighbour<K>(positions.x), firstNeighbour<K>(positions.y),
            firstNeighbour<K>(positions.z)};
}

// Where indices need no care in 32 bits; NaN is not near.
inline bool allNear(const Reals& positions)
{
    const auto near = [](Real position) { return Real(hn::Abs(position.lanes)) <= Real(kNear); };
    return allTrue(hn::And(hn::And(near(positions.x), near(positions.y)), near(positions.z)));
}

struct RealAxes {
    RealAxis x;
    RealAxis y;
    RealAxis z;

    explicit RealAxes(const Channel& channel) : x(channel.x), y(channel.y), z(channel.z) {}

    Mask holds(const Reals& indices) const
    {
        return hn::And(hn::And(x.holds(indices.x), y.holds(indices.y)), z.holds(indices.z));
    }
    Reals within(const Reals& indices) const
    {
        return {x.within(indices.x), y.within(indices.y), z.within(indices.z)};
    }
    // From the channel's first voxel to voxels that the brick holds.
    Offset bytes(const Reals& indices) const
    {
        return wholeNumber(x.bytes(indices.x) + y.bytes(indices.y) + z.bytes(indices.z));
    }
};

// The first neighbours of the samples that only read what the brick holds.
class Interior {
public:
    // A row is read up to `beyond` voxels further than its neighbours, upwards in memory.
    Interior(const Channel& channel, Kernel kernel, double beyond)
        : x_(channel.x, reach(kernel)), y_(channel.y, reach(kernel)), z_(channel.z, reach(kernel))
    {
        if (channel.x.stride < 0) {
            x_.first += beyond;
        } else {
            x_.last -= beyond;
        }
    }

    bool holds(const Reals& firsts) const
    {
        return allTrue(
            hn::And(hn::And(x_.holds(firsts.x), y_.holds(firsts.y)), z_.holds(firsts.z)));
    }

private:
    struct Range {
        double first;
        double last;

        Range(const Axis& axis, int neighbours)
            : first(axis.first), last(axis.last + 1.0 - neighbours)
        {
        }
        Mask holds(Real index) const { return hn::And(index >= Real(first), index <= Real(last)); }
    };

    Range x_;
    Range y_;
    Range z_;
};

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
