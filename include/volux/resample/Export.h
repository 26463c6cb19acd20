/// @file
/// The mark of what the library volux_resample exports.
#pragma once

// CMake defines volux_resample_EXPORTS for the sources of the library itself and for nobody else.
#if defined(_WIN32)
#if defined(volux_resample_EXPORTS)
#define VOLUX_RESAMPLE_API __declspec(dllexport)
#else
#define VOLUX_RESAMPLE_API __declspec(dllimport)
#endif
#else
/// Exported from the library.
#define VOLUX_RESAMPLE_API __attribute__((visibility("default")))
#endif
