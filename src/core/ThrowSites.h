// Every message, component and line that volux_core can throw.
#pragma once

#include <string>

#include "volux/base/Exception.h"

namespace volux::core::detail {

struct ThrowSite {
    const char* message;
    const char* component;
    int line;
};

inline constexpr char kVxImage[] = R"(..\..\src\core\VxImage)";
inline constexpr char kInterpolationType[] = R"(..\..\src\core\InterpolationType)";

// These identify a throw site to callers, who match them verbatim, spelling included. They do not
// follow edits of the source.
inline constexpr ThrowSite kInitializeTwice = {"Can not initialize twice before terminate.",
                                               kVxImage, 78};
inline constexpr ThrowSite kInitializeTwiceByCopy = {"Can not initialize twice before terminate.",
                                                     kVxImage, 95};
inline constexpr ThrowSite kWrapReserved = {"Can not initializeWithPointer by reserved VxImage",
                                            kVxImage, 114};
inline constexpr ThrowSite kResizeWrapped = {
    "Can not resize VxImage that uses external memory.Use initalize with pointer insted.", kVxImage,
    411};
inline constexpr ThrowSite kBorderWithoutTable = {"invalid use of Border*", kInterpolationType, 31};
inline constexpr ThrowSite kInterpolatorWithoutTableRunTimeBorder = {"invalid use of Interpolator*",
                                                                     kInterpolationType, 45};
inline constexpr ThrowSite kInterpolatorWithoutTable = {"invalid use of Interpolator*",
                                                        kInterpolationType, 59};

[[noreturn]] inline void raise(const ThrowSite& site)
{
    const std::string component = site.component;
    const std::string message = site.message;
    const base::Exception error(message, component, site.line);
    // Throws a copy, spelt so that no compiler may elide it: the local object and the thrown one
    // each print their line on the standard error stream, and callers see the number of lines.
    throw base::Exception(error);
}

}  // namespace volux::core::detail
