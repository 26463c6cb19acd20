// Vectors of doubles with the operators that the rules of the arithmetic are written in, and how
// voxels become such, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_LANES) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_LANES
#undef VOLUX_RESAMPLE_LANES
#else
#define VOLUX_RESAMPLE_LANES
#endif

#include <hwy/highway.h>

#include <cstring>
#include <limits>
#include <type_traits>

#include "Channel.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Words = hn::RebindToUnsigned<Doubles>;
using Offsets = hn::RebindToSigned<Doubles>;
using Word = hn::Vec<Words>;
using Offset = hn::Vec<Offsets>;
using Mask = hn::Mask<Doubles>;

constexpr std::size_t kLanes = hn::MaxLanes(Doubles());

// One number in each lane; also a voxel index, which is a whole number that no image exceeds.
template <class D>
struct Numbers {
    hn::Vec<D> lanes;

    Numbers() = default;
    explicit Numbers(hn::Vec<D> all) : lanes(all) {}
    explicit Numbers(double all) : lanes(hn::Set(D(), all)) {}
};

template <class D>
inline Numbers<D> operator+(Numbers<D> a, Numbers<D> b)
{
    return Numbers<D>(hn::Add(a.lanes, b.lanes));
}
template <class D>
inline Numbers<D> operator-(Numbers<D> a, Numbers<D> b)
{
    return Numbers<D>(hn::Sub(a.lanes, b.lanes));
}
template <class D>
inline Numbers<D> operator*(Numbers<D> a, Numbers<D> b)
{
    return Numbers<D>(hn::Mul(a.lanes, b.lanes));
}
template <class D>
inline Numbers<D> operator/(Numbers<D> a, Numbers<D> b)
{
    return Numbers<D>(hn::Div(a.lanes, b.lanes));
}
template <class D>
inline hn::Mask<D> operator>=(Numbers<D> a, Numbers<D> b)
{
    return hn::Ge(a.lanes, b.lanes);
}
template <class D>
inline hn::Mask<D> operator<=(Numbers<D> a, Numbers<D> b)
{
    return hn::Le(a.lanes, b.lanes);
}

// The zero that is added makes -0.0 the 0.0 that an integer index is.
template <class D>
inline Numbers<D> truncated(Numbers<D> position)
{
    return Numbers<D>(hn::Trunc(position.lanes)) + Numbers<D>(0.0);
}
template <class D>
inline Numbers<D> steppedDownUnless(hn::Mask<D> stays, Numbers<D> index)
{
    return index - Numbers<D>(hn::IfThenElseZero(hn::Not(stays), Numbers<D>(1.0).lanes));
}
template <class D>
inline Numbers<D> offset(Numbers<D> index, int steps)
{
    return index + Numbers<D>(static_cast<double>(steps));
}
template <class D>
inline Numbers<D> numberOf(Numbers<D> index)
{
    return index;
}
template <class D>
inline Numbers<D> withSignOf(Numbers<D> magnitude, Numbers<D> sign)
{
    return Numbers<D>(hn::CopySign(magnitude.lanes, sign.lanes));
}

// As many as a vector holds.
using Real = Numbers<Doubles>;

inline Real load(const double* from)
{
    return Real(hn::LoadU(Doubles(), from));
}
inline void store(Real numbers, double* to)
{
    hn::StoreU(numbers.lanes, Doubles(), to);
}
inline Real select(Mask mask, Real yes, Real no)
{
    return Real(hn::IfThenElse(mask, yes.lanes, no.lanes));
}
inline bool allTrue(Mask mask)
{
    return hn::AllTrue(Doubles(), mask);
}

using exact::Kernel;
#include "exact/Rules.inc"

// Exact for whole numbers up to 2^51: their bits below those of 1.5 * 2^52.
inline Offset wholeNumber(Real number)
{
    const Offsets d;
    const Real bias(0x1.8p52);
    return hn::Sub(hn::BitCast(d, (number + bias).lanes), hn::BitCast(d, bias.lanes));
}

// The elements that begin at a bit of each word, exactly as doubles.
template <class T, int Bit>
HWY_INLINE Real fromBits(Word words)
{
    const Doubles d;
    if constexpr (std::is_same_v<T, double>) {
        return Real(hn::BitCast(d, words));
    } else if constexpr (std::is_same_v<T, float>) {
        const hn::Rebind<float, Doubles> halves;
        const hn::Rebind<std::uint32_t, Doubles> lower;
        const Word lowest = Bit == 0 ? words : hn::ShiftRight<Bit>(words);
        return Real(hn::PromoteTo(d, hn::BitCast(halves, hn::TruncateTo(lower, lowest))));
    } else if constexpr (Bit + 8 * sizeof(T) > 52) {
        return fromBits<T, 0>(hn::ShiftRight<Bit>(words));
    } else {
        // Put below the bits of the power of two whose unit in the last place is what one is here;
        // that is then taken off. Signed ones are moved up before. The other bits are masked, so
        // one exclusive or does both.
        constexpr std::uint64_t kMask = std::numeric_limits<std::make_unsigned_t<T>>::max();
        constexpr std::uint64_t kUp = std::is_signed_v<T> ? (kMask >> 1U) + 1 : 0;
        constexpr std::uint64_t kBias = std::uint64_t{0x433 - Bit} << 52U;
        constexpr double kPower = 0x1p52 / static_cast<double>(std::uint64_t{1} << Bit);
        const Word biased = hn::Xor(hn::And(words, hn::Set(Words(), kMask << Bit)),
                                    hn::Set(Words(), kBias | (kUp << Bit)));
        return Real(hn::BitCast(d, biased)) - Real(kPower + static_cast<double>(kUp));
    }
}

template <class T>
inline Real fromLowest(Word words)
{
    return fromBits<T, 0>(words);
}

// Voxels, exactly as doubles.
template <class T, class D>
inline Numbers<D> widened(D d, hn::Vec<hn::Rebind<T, D>> voxels)
{
    if constexpr (std::is_same_v<T, double>) {
        return Numbers<D>(voxels);
    } else if constexpr (std::is_same_v<T, unsigned int>) {
        // Put below the bits of 2^52, which are then taken off.
        const hn::RebindToUnsigned<D> words;
        const Numbers<D> power(0x1p52);
        const auto raised = hn::Or(hn::PromoteTo(words, voxels), hn::BitCast(words, power.lanes));
        return Numbers<D>(hn::BitCast(d, raised)) - power;
    } else if constexpr (sizeof(T) < sizeof(int)) {
        return Numbers<D>(hn::PromoteTo(d, hn::PromoteTo(hn::Rebind<std::int32_t, D>(), voxels)));
    } else {
        return Numbers<D>(hn::PromoteTo(d, voxels));
    }
}

// As many contiguous voxels as there are lanes.
template <class T, class D = Doubles>
inline Numbers<D> loadVoxels(const T* first)
{
    return widened<T>(D(), hn::LoadU(hn::Rebind<T, D>(), first));
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
