// The two functions that Highway's headers only declare, for a module that has no libhwy to load:
// Debian's is a shared one. It would not do anyway: a libhwy keeps the chosen instruction set of
// everything in the process that uses it, in a form that depends on each one's headers.

#include <hwy/targets.h>

namespace hwy {

ChosenTarget& GetChosenTarget()
{
    static ChosenTarget chosen;
    return chosen;
}

// An instruction set is supported by a processor that has every feature for which
// hwy/ops/set_macros-inl.h compiles it. (clang++ can not be asked about F16C, which all have that
// have AVX2.)
int64_t SupportedTargets()
{
    int64_t supported = HWY_STATIC_TARGET;
#if HWY_ARCH_X86
    const bool hasSsse3 = __builtin_cpu_supports("ssse3");
    const bool hasSse4 = hasSsse3 && __builtin_cpu_supports("sse4.1") &&
                         __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("pclmul") &&
                         __builtin_cpu_supports("aes");
    const bool hasAvx2 = hasSse4 && __builtin_cpu_supports("avx2") &&
                         __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
                         __builtin_cpu_supports("fma");
    const bool hasAvx3 = hasAvx2 && __builtin_cpu_supports("avx512f") &&
                         __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                         __builtin_cpu_supports("avx512bw");
    supported |= (hasSsse3 ? HWY_SSSE3 : 0) | (hasSse4 ? HWY_SSE4 : 0) | (hasAvx2 ? HWY_AVX2 : 0) |
                 (hasAvx3 ? HWY_AVX3 : 0);
#endif
    return supported;
}

}  // namespace hwy
