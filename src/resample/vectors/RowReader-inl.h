// Where the neighbours of a vector of samples are, and how a row of them is read, for the
// instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_ROW_READER) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_ROW_READER
#undef VOLUX_RESAMPLE_ROW_READER
#else
#define VOLUX_RESAMPLE_ROW_READER
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "LaneRows-inl.h"
#include "OneSample.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A NaN gives the first. Processors differ in what their minima and maxima make of one.
inline Real clamped(Real index, double first, double last)
{
    const Real fromFirst = select(index >= Real(first), index, Real(first));
    return select(fromFirst <= Real(last), fromFirst, Real(last));
}

// A number along each axis.
struct Reals {
    Real x;
    Real y;
    Real z;
};

// An axis in the numbers that vectors are compared with, for which a vector need not wait.
struct RealAxis {
    double first;
    double last;
    double lastVoxel;  // of the whole source
    double stride;

    explicit RealAxis(const Axis& axis)
        : first(axis.first),
          last(axis.last),
          lastVoxel(axis.extent - 1.0),
          stride(axis.first == axis.last ? 0.0 : static_cast<double>(axis.stride))
    {
    }

    // Clamping to what the brick holds keeps every read inside it; an index that Constant replaces
    // may read any of its voxels.
    Real within(Real index) const { return clamped(index, first, last); }

    Mask holds(Real firstIndex, Real lastIndex) const
    {
        return hn::And(firstIndex >= Real(0.0), lastIndex <= Real(lastVoxel));
    }
    Mask holds(Real index) const { return holds(index, index); }

    // From the brick's first voxel to one that the brick holds.
    Real bytes(Real index) const { return (index - Real(first)) * Real(stride); }
};

// Whether all neighbours from `first` on are inside.
template <Kernel K>
inline Mask allInside(const RealAxis& axis, Real first)
{
    return axis.holds(first, offset(first, reach(K) - 1));
}

// What Linear and Cubic make of their neighbours, whose rows `rows` gives as in weightedSum().
template <class T, Kernel K>
struct Summed {
    template <class Ys, class Rows>
    static HWY_INLINE Real of(const Real (&xs)[reach(K)], const Ys (&ys)[reach(K)],
                              const Ys (&zs)[reach(K)], const Rows& rows, const Reals&)
    {
        return weightedSum<WeightedSum<K, Real>>(xs, ys, zs, rows);
    }
    static void readOneByOne(const Channel& channel, const Outside& outside, Block& block,
                             std::size_t first, std::size_t end)
    {
        detail::readOneByOne<T, K>(channel, outside, block, first, end);
    }
};

// Eight bytes from each offset on, as they are in memory.
inline Word wordsAt(const unsigned char* data, Offset offsets)
{
    HWY_ALIGN std::int64_t at[kLanes];
    hn::Store(offsets, Offsets(), at);
    return loadWords(data, at);
}

// Reads the neighbours of each sample along x. Where voxels are contiguous a word holds several of
// them; `shifts` says how far each one's bits are from the lowest.
template <class T, Kernel K, bool Contiguous>
class RowReader {
public:
    RowReader(const RealAxis& axis, Real first)
    {
        for (int w = 0; w < kWords; ++w) {
            if constexpr (Contiguous) {
                findContiguous(axis, first, w);
            } else {
                findSingle(axis, offset(first, w), w);
            }
        }
    }

    // The neighbours of one row, whose first voxel is `row` bytes from the channel's.
    void read(const Channel& channel, Offset row, Real (&values)[reach(K)]) const
    {
        for (int w = 0; w < kWords; ++w) {
            const Word words = wordsAt(channel.data, hn::Add(row, offsets_[w]));
            for (int i = w * kHeld; i < kReach && i < (w + 1) * kHeld; ++i) {
                // One voxel that fills its word needs no shift.
                values[i] =
                    fromLowest<T>(sizeof(T) == kWordBytes ? words : hn::Shr(words, shifts_[i]));
            }
        }
    }
    void read(const Channel& channel, std::int64_t row, Real (&values)[reach(K)]) const
    {
        read(channel, hn::Set(Offsets(), row), values);
    }

private:
    static constexpr int kReach = reach(K);
    static constexpr int kHeld = Contiguous ? static_cast<int>(kWordBytes / sizeof(T)) : 1;
    static constexpr int kWords = (kReach + kHeld - 1) / kHeld;
    static constexpr double kBytes = sizeof(T);
    static constexpr double kBits = 8.0 * kBytes;

    static Word shift(Real bits) { return hn::BitCast(Words(), wholeNumber(bits)); }

    void findContiguous(const RealAxis& axis, Real first, int w)
    {
        const Real begin = clamped(offset(first, w * kHeld), axis.first, axis.last - (kHeld - 1));
        offsets_[w] = wholeNumber((begin - Real(axis.first)) * Real(kBytes));
        for (int i = w * kHeld; i < kReach && i < (w + 1) * kHeld; ++i) {
            shifts_[i] = shift((axis.within(offset(first, i)) - begin) * Real(kBits));
        }
    }

    // A word that would pass the row's upper end in memory begins earlier.
    void findSingle(const RealAxis& axis, Real index, int w)
    {
        const double highest = std::max(axis.stride * (axis.last - axis.first), 0.0);
        const double lastWord = highest + kBytes - double{kWordBytes};
        const Real wanted = (axis.within(index) - Real(axis.first)) * Real(axis.stride);
        const Real begin(hn::Min(wanted.lanes, Real(lastWord).lanes));
        offsets_[w] = wholeNumber(begin);
        shifts_[w] = shift((wanted - begin) * Real(8.0));
    }

    Offset offsets_[kWords];
    Word shifts_[kReach];
};

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
