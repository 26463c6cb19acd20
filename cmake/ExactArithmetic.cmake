# Every result of the libraries is promised to the last bit, so its sources are compiled for exactly the
# arithmetic that they spell.

# Flags that let a compiler, or the start-up code that a linker adds, change results. g++ 12 and newer
# tell the sources of most of them; g++ 11 and clang do not.
string(CONCAT VOLUX_INEXACT_FLAGS
    "-ffast-math|-Ofast|-funsafe-math-optimizations|-fassociative-math|-freciprocal-math|"
    "-ffinite-math-only|-fno-signed-zeros|-fno-honor-nans|-fno-honor-infinities|-fapprox-func|"
    "-fsingle-precision-constant|-fdenormal-fp-math=[a-z,-]+|-ffp-eval-method=[a-z]+|"
    "-ffp-model=fast|-ffp-model=aggressive|-mfpmath=387|/fp:fast")

# All flags that reach the target in any configuration, generator expressions unresolved.
function(volux_flags_of target result)
    get_target_property(options ${target} COMPILE_OPTIONS)
    get_target_property(link_options ${target} LINK_OPTIONS)
    set(flags "${CMAKE_CXX_FLAGS} ${CMAKE_SHARED_LINKER_FLAGS} ${options} ${link_options}")
    foreach(kind ${CMAKE_BUILD_TYPE} ${CMAKE_CONFIGURATION_TYPES})
        string(TOUPPER ${kind} kind)
        string(APPEND flags " ${CMAKE_CXX_FLAGS_${kind}} ${CMAKE_SHARED_LINKER_FLAGS_${kind}}")
    endforeach()
    set(${result} "${flags}" PARENT_SCOPE)
endfunction()

function(volux_refuse_inexact_flags target)
    volux_flags_of(${target} flags)
    if(flags MATCHES "(^|[ ;:>,])(${VOLUX_INEXACT_FLAGS})($|[ ;<>,$])")
        message(FATAL_ERROR "volux_core promises every result to the last bit; ${CMAKE_MATCH_2} "
                            "changes them. Build the library without it; a caller may use it.")
    endif()
endfunction()

function(volux_exact_arithmetic target)
    volux_refuse_inexact_flags(${target})
    # A fused multiply-add rounds once where the kernels round twice. On the sources, not on the
    # target, so that it follows whatever a parent project says.
    get_target_property(sources ${target} SOURCES)
    set_property(SOURCE ${sources} APPEND PROPERTY COMPILE_OPTIONS
        $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-ffp-contract=off>
        $<$<CXX_COMPILER_ID:MSVC>:/fp:precise>)
endfunction()
