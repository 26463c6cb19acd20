// What a processor offers beside the language. VOLUX_CORE_PORTABLE does without, with the same
// bits.
#pragma once

#if defined(__SSE2__) && !defined(VOLUX_CORE_PORTABLE)
#define VOLUX_CORE_SSE2
#include <emmintrin.h>
#endif

namespace volux::exact {

// Asks for the cache line at an address; no more than a hint.
inline void prefetch([[maybe_unused]] const void* address)
{
#ifdef VOLUX_CORE_SSE2
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#endif
}

}  // namespace volux::exact
