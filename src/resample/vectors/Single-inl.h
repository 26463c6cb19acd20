// One sample at a time, for the instruction set that Highway is compiling. Where a vector holds
// four doubles, the weights of three axes share one, and so do the neighbours along x; what is left
// of a sample are its sums, which are added one after the other.
#if defined(VOLUX_RESAMPLE_SINGLE) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_SINGLE
#undef VOLUX_RESAMPLE_SINGLE
#else
#define VOLUX_RESAMPLE_SINGLE
#endif

#include <hwy/highway.h>

#include <cmath>

#include "Lanes-inl.h"
#include "OneInside.h"
#include "Single.h"
#include "exact/ElementTypes.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_MAX_BYTES >= 32

using Fours = hn::FixedTag<double, 4>;
using Quad = Numbers<Fours>;

HWY_INLINE Quad quadOf(exact::Pair low, exact::Pair high)
{
    HWY_ALIGN double each[4];
    exact::store(low, each);
    exact::store(high, each + 2);
    const hn::FixedTag<double, 2> pair;
    return Quad(hn::Combine(Fours(), hn::Load(pair, each + 2), hn::Load(pair, each)));
}

HWY_INLINE Quad lowers(Quad a, Quad b)
{
    return Quad(hn::ConcatLowerLower(Fours(), b.lanes, a.lanes));
}
HWY_INLINE Quad uppers(Quad a, Quad b)
{
    return Quad(hn::ConcatUpperUpper(Fours(), b.lanes, a.lanes));
}
// The first number of each half of both, or the second.
HWY_INLINE Quad firsts(Quad a, Quad b)
{
    return Quad(hn::InterleaveLower(Fours(), a.lanes, b.lanes));
}
HWY_INLINE Quad seconds(Quad a, Quad b)
{
    return Quad(hn::InterleaveUpper(Fours(), a.lanes, b.lanes));
}

// All eight neighbours of Linear, x fastest.
struct Cell {
    Quad lower;
    Quad upper;

    Cell() = default;
    Cell(Quad atLowerZ, Quad atUpperZ) : lower(atLowerZ), upper(atUpperZ) {}
};

HWY_INLINE Cell operator*(const Cell& a, const Cell& b)
{
    return {a.lower * b.lower, a.upper * b.upper};
}

// The sums of one sample, whose neighbours come in vectors. Not specialisations of WeightedSum: in
// AVX2 a Quad is what others of its vectors are, each of whose lanes is a sample.
struct LinearSum {
    double products = -0.0;

    HWY_INLINE void add(const Cell& weights, const Cell& voxels)
    {
        const Cell both = voxels * weights;
        add(both.lower);
        add(both.upper);
    }
    HWY_INLINE double result() const { return products; }

private:
    HWY_INLINE void add(Quad four)
    {
        HWY_ALIGN double each[4];
        hn::Store(four.lanes, Fours(), each);
        products += each[0];
        products += each[1];
        products += each[2];
        products += each[3];
    }
};

struct CubicSum {
    using Pairs = hn::FixedTag<double, 2>;
    hn::Vec<Pairs> sums;  // of the weights, and of the weighted voxels

    HWY_INLINE CubicSum() : sums(hn::Zero(Pairs())) {}
    HWY_INLINE void add(Quad weights, Quad voxels)
    {
        const Quad both = voxels * weights;
        const Quad even = firsts(weights, both);
        const Quad odd = seconds(weights, both);
        sums = hn::Add(sums, hn::LowerHalf(Pairs(), even.lanes));
        sums = hn::Add(sums, hn::LowerHalf(Pairs(), odd.lanes));
        sums = hn::Add(sums, hn::UpperHalf(Pairs(), even.lanes));
        sums = hn::Add(sums, hn::UpperHalf(Pairs(), odd.lanes));
    }
    HWY_INLINE double result() const
    {
        HWY_ALIGN double each[2];
        hn::Store(sums, Pairs(), each);
        return each[1] / each[0];
    }
};

HWY_INLINE bool isInterior(const SampledChannel& channel, Quad positions)
{
    const Quad begin(hn::LoadU(Fours(), channel.begin));
    const Quad end(hn::LoadU(Fours(), channel.end));
    return hn::AllTrue(Fours(), hn::And(positions >= begin, hn::Lt(positions.lanes, end.lanes)));
}

// The neighbours inside, in vectors.
template <class T, Kernel, bool Contiguous>
struct InsideQuads {
    Inside<T, Contiguous> voxels;

    // Four along x, of one row.
    HWY_INLINE Quad four(int j, int k) const
    {
        const unsigned char* const row = voxels.row(j, k);
        if constexpr (Contiguous) {
            return loadVoxels<T, Fours>(reinterpret_cast<const T*>(row));
        } else {
            return quadOf(voxels.pair(row), voxels.pair(row + 2 * voxels.strideX));
        }
    }

    // Two along x, of each of two rows.
    HWY_INLINE Quad face(int k) const
    {
        const unsigned char* const row = voxels.row(0, k);
        const unsigned char* const next = row + voxels.strideY;
        if constexpr (Contiguous) {
            const hn::FixedTag<T, 2> two;
            const auto lower = hn::LoadU(two, reinterpret_cast<const T*>(row));
            const auto upper = hn::LoadU(two, reinterpret_cast<const T*>(next));
            return widened<T>(Fours(), hn::Combine(hn::FixedTag<T, 4>(), upper, lower));
        } else {
            return quadOf(voxels.pair(row), voxels.pair(next));
        }
    }
};

// The neighbours where some are outside, each axis resolved once.
template <class T, Kernel K, bool Contiguous>
struct EdgeQuads {
    const SampledChannel& channel;
    AxisReads<K> columns;
    AxisReads<K> rows;
    AxisReads<K> slices;
    bool isRun;

    EdgeQuads(const SampledChannel& sampled, const Channel& axes, const Outside& outside, double x,
              double y, double z)
        : channel(sampled),
          columns(axes.x, outside, exact::firstNeighbour<K>(x)),
          rows(axes.y, outside, exact::firstNeighbour<K>(y)),
          slices(axes.z, outside, exact::firstNeighbour<K>(z)),
          isRun(Contiguous && x >= sampled.begin[0] && x < sampled.end[0])
    {
    }

    HWY_INLINE Quad four(int j, int k) const
    {
        const unsigned char* const row = rowAt(j, k);
        if (row == nullptr) {
            return Quad(channel.outside);
        }
        return isRun ? loadVoxels<T, Fours>(reinterpret_cast<const T*>(row + columns.bytes[0]))
                     : quadOf(pair(row, 0), pair(row, 2));
    }

    HWY_INLINE Quad face(int k) const { return quadOf(pair(rowAt(0, k), 0), pair(rowAt(1, k), 0)); }

private:
    // Null outside.
    const unsigned char* rowAt(int j, int k) const
    {
        const auto* const data = static_cast<const unsigned char*>(channel.data);
        return rows.isInside[j] && slices.isInside[k] ? data + rows.bytes[j] + slices.bytes[k]
                                                      : nullptr;
    }
    double voxel(const unsigned char* row, int i) const
    {
        return row != nullptr && columns.isInside[i] ? elementAt<T>(row + columns.bytes[i])
                                                     : channel.outside;
    }
    exact::Pair pair(const unsigned char* row, int i) const
    {
        return {voxel(row, i), voxel(row, i + 1)};
    }
};

// No position of the interior is below zero, so the voxel there is what truncating gives; that of
// -0.0 is 0.0.
HWY_INLINE Quad voxelsAt(Quad positions)
{
    return Quad(hn::Trunc(hn::Abs(positions.lanes)));
}

template <class Voxels>
HWY_INLINE double linearSum(Quad positions, Quad lowest, const Voxels& voxels)
{
    Quad weights[2];
    weigh(positions, lowest, weights);
    const Quad xAndZ = firsts(weights[0], weights[1]);
    const Quad x = lowers(xAndZ, xAndZ);
    const Quad y = lowers(seconds(weights[0], weights[0]), seconds(weights[1], weights[1]));
    const Cell xs[1] = {{x, x}};
    const Cell ys[1] = {{y, y}};
    const Cell zs[1] = {{uppers(weights[0], weights[0]), uppers(weights[1], weights[1])}};
    return weightedSum<LinearSum>(xs, ys, zs, [&](int, int) HWY_ATTR {
        return [&](int) HWY_ATTR { return Cell(voxels.face(0), voxels.face(1)); };
    });
}

template <class Voxels>
HWY_INLINE double cubicSum(Quad positions, Quad lowest, const Voxels& voxels)
{
    Quad weights[4];
    weigh(positions, offset(lowest, -1), weights);
    const Quad xs[1] = {lowers(firsts(weights[0], weights[1]), firsts(weights[2], weights[3]))};
    Quad ys[4];
    Quad zs[4];
    for (int n = 0; n < 4; ++n) {
        const Quad twice = seconds(weights[n], weights[n]);
        ys[n] = lowers(twice, twice);
        zs[n] = uppers(weights[n], weights[n]);
    }
    return weightedSum<CubicSum>(xs, ys, zs, [&](int j, int k) HWY_ATTR {
        return [four = voxels.four(j, k)](int) HWY_ATTR { return four; };
    });
}

// `lowest` are the voxels at or below the position.
template <class T, Kernel K, bool Contiguous, template <class, Kernel, bool> class Quads>
HWY_INLINE double sumOf(Quad positions, Quad lowest, const Quads<T, K, Contiguous>& voxels)
{
    if constexpr (K == Kernel::LINEAR) {
        return linearSum(positions, lowest, voxels);
    } else {
        return cubicSum(positions, lowest, voxels);
    }
}

// Where indices need no care in 32 bits, a number stands for each; NaN is not near.
template <class T, Kernel K, bool Contiguous>
HWY_NOINLINE double readAround(const SampledChannel& channel, double x, double y, double z)
{
    const Quad positions = quadOf(exact::Pair(x, y), exact::Pair(z));
    if (!hn::AllTrue(Fours(), Quad(hn::Abs(positions.lanes)) <= Quad(kNear))) {
        return readEdge<T, K>(channel, x, y, z);
    }
    const EdgeQuads<T, K, Contiguous> voxels(channel, channelOf(channel),
                                             {channel.isConstant, channel.outside}, x, y, z);
    return sumOf(positions, lowerVoxel(positions), voxels);
}

template <class T, Kernel K, bool Contiguous>
double readSingle(const SampledChannel& channel, double x, double y, double z)
{
    const Quad positions = quadOf(exact::Pair(x, y), exact::Pair(z));
    if (HWY_UNLIKELY(!isInterior(channel, positions))) {
        return readAround<T, K, Contiguous>(channel, x, y, z);
    }
    const std::int64_t back = K == Kernel::CUBIC ? channel.back : 0;
    const InsideQuads<T, K, Contiguous> voxels = {{channel, x, y, z, back}};
    return sumOf(positions, voxelsAt(positions), voxels);
}

#endif

// A voxel inside is the one that rounding down gives, and outside either rule leads outside.
template <class T, bool Contiguous>
double readNearestAt(const SampledChannel& channel, double x, double y, double z)
{
    const auto voxel = [](double position) {
        return exact::truncateToInt64(std::floor(position + 0.5));
    };
    const auto isBelow = [](std::int64_t index, std::int64_t extent) {
        return static_cast<std::uint64_t>(index) < static_cast<std::uint64_t>(extent);
    };
    const std::int64_t column = voxel(x);
    const std::int64_t row = voxel(y);
    const std::int64_t slice = voxel(z);
    const bool isInside = isBelow(column, channel.extents[0]) && isBelow(row, channel.extents[1]) &&
                          isBelow(slice, channel.extents[2]);
    if (HWY_UNLIKELY(!isInside)) {
        return readEdge<T, Kernel::NEAREST>(channel, x, y, z);
    }
    return elementAt<T>(static_cast<const unsigned char*>(channel.data) +
                        (column * (Contiguous ? kBytes<T> : channel.strides[0]) +
                         row * channel.strides[1] + slice * channel.strides[2]));
}

template <class T, Kernel K>
SampledChannel::Read readerOf(bool isContiguous)
{
    if constexpr (K == Kernel::NEAREST) {
        return isContiguous ? readNearestAt<T, true> : readNearestAt<T, false>;
    } else {
#if HWY_MAX_BYTES >= 32
        return isContiguous ? readSingle<T, K, true> : readSingle<T, K, false>;
#else
        return isContiguous ? readInside<T, K, true> : readInside<T, K, false>;
#endif
    }
}

inline SampledChannel::Read singleReader(const Channel& channel, Kernel kernel)
{
    return exact::withElementType(channel.type, [&](auto element) -> SampledChannel::Read {
        using T = typename decltype(element)::Type;
        const bool isContiguous = channel.x.stride == kBytes<T>;
        switch (kernel) {
            case Kernel::NEAREST:
                return readerOf<T, Kernel::NEAREST>(isContiguous);
            case Kernel::LINEAR:
                return readerOf<T, Kernel::LINEAR>(isContiguous);
            case Kernel::CUBIC:
                return readerOf<T, Kernel::CUBIC>(isContiguous);
        }
        __builtin_unreachable();  // there is no other kernel
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
