// Readings as elements, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_ELEMENTS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_ELEMENTS
#undef VOLUX_RESAMPLE_ELEMENTS
#else
#define VOLUX_RESAMPLE_ELEMENTS
#endif

#include <hwy/highway.h>

#include <cstring>
#include <limits>
#include <type_traits>

#include "Blocks.h"
#include "Conversion.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Rounded and saturated as saturated<T>() does, and left as the low bits of whole numbers.
template <class T, class D>
inline hn::Vec<hn::RebindToUnsigned<D>> saturatedBits(D d, hn::Vec<D> readings)
{
    using Limits = std::numeric_limits<T>;
    const auto half = hn::CopySign(hn::Set(d, kAlmostHalf), readings);
    const auto rounded = hn::Add(readings, half);
    const auto inRange =
        hn::Min(hn::Max(rounded, hn::Set(d, static_cast<double>(Limits::lowest()))),
                hn::Set(d, static_cast<double>(Limits::max())));
    const auto whole = hn::Trunc(hn::IfThenElseZero(hn::Eq(rounded, rounded), inRange));
    return hn::BitCast(hn::RebindToUnsigned<D>(), hn::Add(whole, hn::Set(d, 0x1.8p52)));
}

template <class T>
void saturateBlock(const double* samples, std::size_t count, T* elements)
{
    const hn::ScalableTag<double> d;
    using Bits = std::make_unsigned_t<T>;
    const hn::Rebind<Bits, decltype(d)> narrow;
    std::size_t n = 0;
    for (; n + hn::Lanes(d) <= count; n += hn::Lanes(d)) {
        const auto bits = saturatedBits<T>(d, hn::LoadU(d, samples + n));
        hn::StoreU(hn::TruncateTo(narrow, bits), narrow, reinterpret_cast<Bits*>(elements + n));
    }
    for (; n < count; ++n) {
        elements[n] = elementOf<T>(samples[n], Overflow::SATURATE);
    }
}

template <class T>
void elementsOf(Overflow overflow, const double* samples, std::size_t count, void* untyped)
{
    T* const elements = static_cast<T*>(untyped);
    if constexpr (std::is_integral_v<T>) {
        // One lane is slower than no lanes at all.
        if (overflow == Overflow::SATURATE && HWY_TARGET != HWY_SCALAR) {
            return saturateBlock(samples, count, elements);
        }
    }
    for (std::size_t n = 0; n < count; ++n) {
        elements[n] = elementOf<T>(samples[n], overflow);
    }
}

inline void elementsOfBlock(core::DataType type, Overflow overflow, const double* samples,
                            std::size_t count, void* elements)
{
    switch (type) {
        case core::DT_UCHAR:
            return elementsOf<unsigned char>(overflow, samples, count, elements);
        case core::DT_SHORT:
            return elementsOf<short>(overflow, samples, count, elements);
        case core::DT_USHORT:
            return elementsOf<unsigned short>(overflow, samples, count, elements);
        case core::DT_INT:
            return elementsOf<int>(overflow, samples, count, elements);
        case core::DT_UINT:
            return elementsOf<unsigned int>(overflow, samples, count, elements);
        case core::DT_FLOAT:
            return elementsOf<float>(overflow, samples, count, elements);
        case core::DT_DOUBLE:
            return elementsOf<double>(overflow, samples, count, elements);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
