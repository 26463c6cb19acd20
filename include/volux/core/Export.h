/// @file
/// The marks that decide what the shared library exports. No other header has platform macros.
#pragma once

// CMake defines volux_core_EXPORTS for the sources of volux_core and for nobody else.
#if defined(_WIN32)
#if defined(volux_core_EXPORTS)
#define VOLUX_CORE_API __declspec(dllexport)
#else
#define VOLUX_CORE_API __declspec(dllimport)
#endif
#define VOLUX_CORE_INLINE_API
#define VOLUX_CORE_LOCAL
#elif defined(volux_core_EXPORTS)
/// Exported from volux_core.
#define VOLUX_CORE_API __attribute__((visibility("default")))
/// Exported although it is inline: "used" makes volux_core emit what callers' compilers inline.
#define VOLUX_CORE_INLINE_API __attribute__((visibility("default"), used))
/// Hidden in volux_core although its class is exported.
#define VOLUX_CORE_LOCAL __attribute__((visibility("hidden")))
#else
#define VOLUX_CORE_API __attribute__((visibility("default")))
#define VOLUX_CORE_INLINE_API
#define VOLUX_CORE_LOCAL
#endif
