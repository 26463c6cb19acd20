// Rows of neighbours, one of each lane, for the instruction set that Highway is compiling. Plain
// loads and a transposition in registers: on many processors instructions that gather are slower.
#if defined(VOLUX_RESAMPLE_LANE_ROWS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_LANE_ROWS
#undef VOLUX_RESAMPLE_LANE_ROWS
#else
#define VOLUX_RESAMPLE_LANE_ROWS
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR  // nothing to transpose

inline Word loadWords(const unsigned char* row, const std::int64_t* offsets)
{
    return hn::LoadU(Words(), reinterpret_cast<const std::uint64_t*>(row + *offsets));
}

#else

// The bytes at each lane's offset: eight of every lane, or sixteen of every second one.
template <std::size_t Least, class D>
HWY_INLINE hn::Vec<D> loadPieces(D d, const unsigned char* row, const std::int64_t* offsets)
{
    constexpr std::size_t kHere = hn::MaxLanes(D());
    if constexpr (kHere == Least) {
        return hn::LoadU(d, reinterpret_cast<const hn::TFromD<D>*>(row + *offsets));
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, loadPieces<Least>(half, row, offsets + kHere / 2),
                           loadPieces<Least>(half, row, offsets));
    }
}

HWY_INLINE Word loadWords(const unsigned char* row, const std::int64_t* offsets)
{
    return loadPieces<1>(Words(), row, offsets);
}

// The words that each lane's row begins with.
HWY_INLINE void loadRows(const unsigned char* row, const std::int64_t* offsets, Word (&words)[1])
{
    words[0] = loadWords(row, offsets);
}

HWY_INLINE void loadRows(const unsigned char* row, const std::int64_t* offsets, Word (&words)[2])
{
    const Word even = loadPieces<2>(Words(), row, offsets);
    const Word odd = loadPieces<2>(Words(), row, offsets + 1);
    words[0] = hn::InterleaveLower(Words(), even, odd);
    words[1] = hn::InterleaveUpper(Words(), even, odd);
}

HWY_INLINE void loadRows(const unsigned char* row, const std::int64_t* offsets, Word (&words)[4])
{
    for (std::size_t half = 0; half < 2; ++half) {
        Word both[2];
        loadRows(row + 2 * half * kWordBytes, offsets, both);
        std::copy_n(both, 2, words + 2 * half);
    }
}

template <class T, Kernel K, Order O>
class LaneRows {
public:
    static constexpr int kReach = reach(K);

    // Voxels `stride` bytes apart.
    explicit LaneRows(std::int64_t stride) : stride_(stride) {}

    // How many voxels further than its neighbours a row is read, upwards in memory. A stride of
    // zero leads to none.
    double beyond() const
    {
        constexpr std::size_t kNeeded = O == Order::APART ? sizeof(T) : kRowBytes;
        constexpr std::size_t kMore = std::max(kNeeded, kWordBytes) - kNeeded;
        const std::int64_t step = std::abs(stride_);
        return kMore == 0 ? 0.0 : std::ceil(static_cast<double>(kMore) / static_cast<double>(step));
    }

    // The neighbours from `row` on, with each lane's offset.
    HWY_INLINE void read(const unsigned char* row, const std::int64_t* offsets,
                         Real (&values)[kReach]) const
    {
        if constexpr (O == Order::APART) {
            for (int i = 0; i < kReach; ++i) {
                values[i] = fromBits<T, 0>(loadWords(row + stride_ * i, offsets));
            }
        } else {
            constexpr std::size_t kBack = O == Order::BACKWARD ? kRowBytes - sizeof(T) : 0;
            Word words[kWords];
            loadRows(row - kBack, offsets, words);
            separate(words, values, std::make_index_sequence<kReach>());
        }
    }

private:
    static constexpr std::size_t kRowBytes = kReach * sizeof(T);
    static constexpr std::size_t kWords = std::max(kRowBytes, kWordBytes) / kWordBytes;

    template <std::size_t... I>
    static HWY_INLINE void separate(const Word (&words)[kWords], Real (&values)[kReach],
                                    std::index_sequence<I...>)
    {
        ((values[O == Order::BACKWARD ? kReach - 1 - I : I] = element<I>(words)), ...);
    }

    template <std::size_t I>
    static HWY_INLINE Real element(const Word (&words)[kWords])
    {
        constexpr std::size_t kByte = I * sizeof(T);
        return fromBits<T, 8 * (kByte % kWordBytes)>(words[kByte / kWordBytes]);
    }

    std::int64_t stride_;
};

#endif

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
