// Labels in vectors, one sample in each lane, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_LABELS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_LABELS
#undef VOLUX_RESAMPLE_LABELS
#else
#define VOLUX_RESAMPLE_LABELS
#endif

#include <hwy/highway.h>

#include <limits>
#include <type_traits>

#include "Labels.h"
#include "Lines-inl.h"
#include "Weighted-inl.h"
#include "exact/ElementTypes.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

inline Mask operator==(Real a, Real b)
{
    return hn::Eq(a.lanes, b.lanes);
}
inline Mask operator>(Real a, Real b)
{
    return hn::Gt(a.lanes, b.lanes);
}
inline Mask both(Mask a, Mask b)
{
    return hn::And(a, b);
}
inline Mask either(Mask a, Mask b)
{
    return hn::Or(a, b);
}
inline bool anyOf(Mask condition)
{
    return !hn::AllFalse(Doubles(), condition);
}
inline Real zeroUnless(Mask condition, Real yes)
{
    return Real(hn::IfThenElseZero(condition, yes.lanes));
}
inline Real greater(Real a, Real b)
{
    return Real(hn::Max(a.lanes, b.lanes));
}
inline Mask isNaN(Real number)
{
    return hn::IsNaN(number.lanes);
}

#include "Vote.inc"

// What Labels makes of its neighbours.
template <class T>
struct Voted {
    template <class Ys, class Rows>
    static HWY_INLINE Real of(const Real (&xs)[2], const Ys (&ys)[2], const Ys (&zs)[2],
                              const Rows& rows, const Reals& positions)
    {
        Real labels[8];
        for (int n = 0; n < 8; n += 2) {
            const auto row = rows(n / 2 % 2, n / 4);
            labels[n] = row(0);
            labels[n + 1] = row(1);
        }
        if (HWY_LIKELY(areAllSame(labels))) {
            return labels[0];
        }
        if constexpr (std::is_floating_point_v<T>) {
            if (!anyOf(isNaN(sumOf(labels)))) {
                return vote<NoNaN>(xs, ys, zs, labels, positions);
            }
        }
        return vote<T>(xs, ys, zs, labels, positions);
    }

    static void readOneByOne(const Channel& channel, const Outside& outside, Block& block,
                             std::size_t first, std::size_t end)
    {
        readLabelsOneByOne<T>(channel, outside, block, first, end);
    }

private:
    template <class Label, class Ys>
    static HWY_INLINE Real vote(const Real (&xs)[2], const Ys (&ys)[2], const Ys (&zs)[2],
                                const Real (&labels)[8], const Reals& positions)
    {
        const auto again = [&labels](int j, int k) HWY_ATTR {
            return [&labels, j, k](int i) HWY_ATTR { return labels[4 * k + 2 * j + i]; };
        };
        // Far positions, whose weights may be anything, are read one by one.
        const auto voters = weightedSum<Voters<Label, true, Real>>(xs, ys, zs, again);
        return elected(voters, [&labels, &positions]() HWY_ATTR {
            return nearestOf(labels, isLowerNearest(positions.x), isLowerNearest(positions.y),
                             isLowerNearest(positions.z));
        });
    }

    // NaN if one of them is, and perhaps if two are infinite.
    static HWY_INLINE Real sumOf(const Real (&labels)[8])
    {
        Real sum = labels[0];
        for (int n = 1; n < 8; ++n) {
            sum = sum + labels[n];
        }
        return sum;
    }

    // Inside a region all are, which is nearly everywhere in most maps.
    static HWY_INLINE bool areAllSame(const Real (&labels)[8])
    {
        Mask same = labels[0] == labels[1];
        for (int n = 2; n < 8; ++n) {
            same = hn::And(same, labels[0] == labels[n]);
        }
        return allTrue(same);
    }
};

inline void readLabelBlockHere(const Channel& channel, const Outside& outside, Block& block)
{
    exact::withElementType(channel.type, [&](auto element) {
        using T = typename decltype(element)::Type;
#if HWY_TARGET != HWY_SCALAR
        if (haveWords(channel, sizeof(T))) {
            return withOrder<T>(channel, [&](auto order) {
                constexpr Order kOrder = decltype(order)::value;
                using Elected = ReadingAlone<Kernel::LINEAR, Voted<T>>;
                WeightedReader<T, Kernel::LINEAR, kOrder, Elected>(channel, outside)(block);
            });
        }
#endif
        readLabelsOneByOne<T>(channel, outside, block, 0, block.count);
    });
}

inline void readLabelLinesHere(const Lines& lines, LineSink& sink)
{
    exact::withElementType(lines.channel.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        withOrder<T>(lines.channel, [&](auto order) {
            constexpr Order kOrder = decltype(order)::value;
            LineReader<T, Kernel::LINEAR, kOrder, Voted<T>> reader(lines);
            reader(sink);
        });
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
