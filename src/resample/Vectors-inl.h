// Vectors of doubles, and how voxels become such, for the instruction set that Highway is
// compiling.
#if defined(VOLUX_RESAMPLE_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_VECTORS
#undef VOLUX_RESAMPLE_VECTORS
#else
#define VOLUX_RESAMPLE_VECTORS
#endif

#include <hwy/highway.h>

#include <cstring>
#include <limits>
#include <type_traits>

#include "Blocks.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Reals = hn::ScalableTag<double>;
using Words = hn::RebindToUnsigned<Reals>;
using Offsets = hn::RebindToSigned<Reals>;
using Real = hn::Vec<Reals>;
using Word = hn::Vec<Words>;
using Offset = hn::Vec<Offsets>;
using Mask = hn::Mask<Reals>;

constexpr std::size_t kMostLanes = 8;

inline Real real(double value)
{
    return hn::Set(Reals(), value);
}

// Exact for whole numbers up to 2^51: their bits below those of 1.5 * 2^52.
inline Offset wholeNumber(Real value)
{
    const Offsets d;
    return hn::Sub(hn::BitCast(d, hn::Add(value, real(0x1.8p52))), hn::BitCast(d, real(0x1.8p52)));
}

// Eight bytes from each offset on, as they lie in memory.
inline Word gatherWords(const unsigned char* data, Offset offsets)
{
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    return hn::GatherOffset(Words(), reinterpret_cast<const std::uint64_t*>(data), offsets);
#else
    HWY_ALIGN std::int64_t at[kMostLanes];
    HWY_ALIGN std::uint64_t words[kMostLanes];
    hn::Store(offsets, Offsets(), at);
    for (std::size_t n = 0; n < hn::Lanes(Words()); ++n) {
        std::memcpy(words + n, data + at[n], kWordBytes);
    }
    return hn::Load(Words(), words);
#endif
}

// The element in the lowest bits of each word, exactly as a double.
template <class T>
inline Real fromLowest(Word words)
{
    const Reals d;
    if constexpr (std::is_same_v<T, double>) {
        return hn::BitCast(d, words);
    } else if constexpr (std::is_same_v<T, float>) {
        const hn::Rebind<float, Reals> halves;
        const hn::Rebind<std::uint32_t, Reals> lower;
        return hn::PromoteTo(d, hn::BitCast(halves, hn::TruncateTo(lower, words)));
    } else {
        // Put below the bits of 2^52, which is then taken off; signed ones are moved up before. The
        // bits below are masked, so one exclusive or does both.
        constexpr std::uint64_t kMask = std::numeric_limits<std::make_unsigned_t<T>>::max();
        constexpr std::uint64_t kUp = std::is_signed_v<T> ? (kMask >> 1U) + 1 : 0;
        constexpr std::uint64_t kBias = std::uint64_t{0x433} << 52U;
        const Word biased =
            hn::Xor(hn::And(words, hn::Set(Words(), kMask)), hn::Set(Words(), kBias | kUp));
        return hn::Sub(hn::BitCast(d, biased), real(0x1p52 + static_cast<double>(kUp)));
    }
}

// As many voxels side by side as there are lanes.
template <class T>
inline Real loadVoxels(const unsigned char* bytes)
{
    const Reals d;
    const T* const first = static_cast<const T*>(static_cast<const void*>(bytes));
    const auto voxels = hn::LoadU(hn::Rebind<T, Reals>(), first);
    if constexpr (std::is_same_v<T, double>) {
        return voxels;
    } else if constexpr (std::is_same_v<T, unsigned int>) {
        return fromLowest<T>(hn::PromoteTo(Words(), voxels));
    } else if constexpr (sizeof(T) < sizeof(int)) {
        return hn::PromoteTo(d, hn::PromoteTo(hn::Rebind<std::int32_t, Reals>(), voxels));
    } else {
        return hn::PromoteTo(d, voxels);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
