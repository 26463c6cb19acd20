// Two doubles next to each other: two neighbours of one sample, which are added one after the
// other. Every operation gives each lane the bits of the scalar one.
#pragma once

#include <cstring>
#include <type_traits>

#include "Processor.h"

namespace volux::exact {

#ifdef VOLUX_CORE_SSE2

struct Pair {
    __m128d lanes;

    explicit Pair(__m128d both) : lanes(both) {}
    Pair() = default;
    explicit Pair(double both) : lanes(_mm_set1_pd(both)) {}
    Pair(double first, double second) : lanes(_mm_set_pd(second, first)) {}

    double first() const { return _mm_cvtsd_f64(lanes); }
    double second() const { return _mm_cvtsd_f64(_mm_unpackhi_pd(lanes, lanes)); }
};

inline Pair operator+(Pair a, Pair b)
{
    return Pair(_mm_add_pd(a.lanes, b.lanes));
}
inline Pair operator-(Pair a, Pair b)
{
    return Pair(_mm_sub_pd(a.lanes, b.lanes));
}
inline Pair operator*(Pair a, Pair b)
{
    return Pair(_mm_mul_pd(a.lanes, b.lanes));
}
inline Pair firsts(Pair a, Pair b)
{
    return Pair(_mm_unpacklo_pd(a.lanes, b.lanes));
}
inline Pair seconds(Pair a, Pair b)
{
    return Pair(_mm_unpackhi_pd(a.lanes, b.lanes));
}

inline void store(Pair pair, double* to)
{
    _mm_storeu_pd(to, pair.lanes);
}

// Two neighbours in memory, exactly as doubles.
template <class T>
Pair widened(const T* voxels)
{
    if constexpr (std::is_same_v<T, double>) {
        return Pair(_mm_loadu_pd(voxels));
    } else if constexpr (std::is_same_v<T, float>) {
        return Pair(_mm_cvtps_pd(
            _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(voxels)))));
    } else if constexpr (std::is_same_v<T, int>) {
        return Pair(_mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(voxels))));
    } else if constexpr (sizeof(T) == sizeof(short)) {
        int both = 0;
        std::memcpy(&both, voxels, sizeof both);
        // Each voxel into both halves of 32 bits, and from the upper one down with its own sign.
        const __m128i narrow = _mm_cvtsi32_si128(both);
        const __m128i twice = _mm_unpacklo_epi16(narrow, narrow);
        return Pair(_mm_cvtepi32_pd(std::is_signed_v<T> ? _mm_srai_epi32(twice, 16)
                                                        : _mm_srli_epi32(twice, 16)));
    } else {
        return Pair(static_cast<double>(voxels[0]), static_cast<double>(voxels[1]));
    }
}

#else

struct Pair {
    double lanes[2];

    Pair() = default;
    explicit Pair(double both) : lanes{both, both} {}
    Pair(double first, double second) : lanes{first, second} {}

    double first() const { return lanes[0]; }
    double second() const { return lanes[1]; }
};

inline Pair operator+(Pair a, Pair b)
{
    return {a.first() + b.first(), a.second() + b.second()};
}
inline Pair operator-(Pair a, Pair b)
{
    return {a.first() - b.first(), a.second() - b.second()};
}
inline Pair operator*(Pair a, Pair b)
{
    return {a.first() * b.first(), a.second() * b.second()};
}
inline Pair firsts(Pair a, Pair b)
{
    return {a.first(), b.first()};
}
inline Pair seconds(Pair a, Pair b)
{
    return {a.second(), b.second()};
}

inline void store(Pair pair, double* to)
{
    to[0] = pair.first();
    to[1] = pair.second();
}

template <class T>
Pair widened(const T* voxels)
{
    return {static_cast<double>(voxels[0]), static_cast<double>(voxels[1])};
}

#endif

}  // namespace volux::exact
