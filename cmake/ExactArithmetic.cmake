# Every result of the module is promised to the last bit, so its sources are compiled for exactly the
# arithmetic that they spell.

# Flags that let a compiler change results. g++ 12 and newer tell the sources of most of them; g++ 11
# and clang do not.
set(VOLUX_INEXACT_FLAGS
    "-ffast-math|-Ofast|-funsafe-math-optimizations|-fassociative-math|-freciprocal-math|\
-ffinite-math-only|-fno-signed-zeros|-ffp-model=fast|-ffp-model=aggressive|/fp:fast|-mfpmath=387")

function(volux_refuse_inexact_flags target)
    get_target_property(options ${target} COMPILE_OPTIONS)
    string(TOUPPER "${CMAKE_BUILD_TYPE}" kind)
    set(flags "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${kind}} ${options}")
    if(flags MATCHES "(^|[ ;])(${VOLUX_INEXACT_FLAGS})($|[ ;])")
        message(FATAL_ERROR "volux_core promises every result to the last bit; ${CMAKE_MATCH_2} "
                            "changes them. Build the module without it; a caller may use it.")
    endif()
endfunction()

function(volux_exact_arithmetic target)
    volux_refuse_inexact_flags(${target})
    # A fused multiply-add rounds once where the kernels round twice.
    target_compile_options(${target} PRIVATE
        $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-ffp-contract=off>
        $<$<CXX_COMPILER_ID:MSVC>:/fp:precise>)
endfunction()
