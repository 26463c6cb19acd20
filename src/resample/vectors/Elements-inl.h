// Readings as elements, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_ELEMENTS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_ELEMENTS
#undef VOLUX_RESAMPLE_ELEMENTS
#else
#define VOLUX_RESAMPLE_ELEMENTS
#endif

#include <hwy/highway.h>

#include <limits>
#include <type_traits>

#include "Elements.h"
#include "Lanes-inl.h"
#include "exact/Conversion.h"
#include "exact/ElementTypes.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// What saturateTo<T>() gives, left as the low bits of whole numbers.
template <class T>
inline Word saturatedBits(Real readings)
{
    using Limits = std::numeric_limits<T>;
    const auto raised = readyToTruncate(readings).lanes;
    const auto inRange = hn::Min(hn::Max(raised, Real(static_cast<double>(Limits::lowest())).lanes),
                                 Real(static_cast<double>(Limits::max())).lanes);
    const auto whole = hn::Trunc(hn::IfThenElseZero(hn::Eq(raised, raised), inRange));
    return hn::BitCast(Words(), (Real(whole) + Real(0x1.8p52)).lanes);
}

template <class T>
inline void storeVector(Real readings, T* elements)
{
    if constexpr (std::is_floating_point_v<T>) {
        const hn::Rebind<T, Doubles> d;
        if constexpr (std::is_same_v<T, float>) {
            hn::StoreU(hn::DemoteTo(d, readings.lanes), d, elements);
        } else {
            hn::StoreU(readings.lanes, d, elements);
        }
    } else {
        using Bits = std::make_unsigned_t<T>;
        const hn::Rebind<Bits, Doubles> d;
        hn::StoreU(hn::TruncateTo(d, saturatedBits<T>(readings)), d,
                   reinterpret_cast<Bits*>(elements));
    }
}

// The elements that whole vectors give; the rest is left to the caller.
template <class T>
std::size_t storeVectors(const double* readings, std::size_t count, T* elements)
{
    const std::size_t lanes = hn::Lanes(Doubles());
    std::size_t n = 0;
    for (; n + lanes <= count; n += lanes) {
        storeVector(load(readings + n), elements + n);
    }
    return n;
}

template <class T>
T elementOf(double reading, Overflow overflow)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(reading);
    } else {
        return overflow == Overflow::SATURATE ? exact::saturateTo<T>(reading)
                                              : exact::roundTo<T>(reading);
    }
}

inline void convertHere(Storage storage, const double* readings, std::size_t count, void* untyped)
{
    exact::withElementType(storage.type, [&](auto element) {
        using T = typename decltype(element)::Type;
        T* const elements = static_cast<T*>(untyped);
        std::size_t n = 0;
        // One lane is slower than none, and emulated ones saturate a double that no float holds.
        if (HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128 &&
            (std::is_floating_point_v<T> || storage.overflow == Overflow::SATURATE)) {
            n = storeVectors(readings, count, elements);
        }
        for (; n < count; ++n) {
            elements[n] = elementOf<T>(readings[n], storage.overflow);
        }
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
