// What repeats a call on a whole volume, in words and hexadecimal floating point.
#pragma once

#include <algorithm>
#include <ios>
#include <sstream>
#include <string>

#include "ElementTypes.h"
#include "ImageFields.h"
#include "SingleCalls.h"

namespace volux::test {

inline std::string described(const Options& options)
{
    const auto kernel =
        std::find(kInterpolators.begin(), kInterpolators.end(), options.interpolator) -
        kInterpolators.begin();
    const auto border =
        std::find(kBorders.begin(), kBorders.end(), options.border) - kBorders.begin();
    std::ostringstream text;
    text << (kernel < 4 ? kKernelNames.at(static_cast<std::size_t>(kernel)) : "own kernel") << ", "
         << (border < 2 ? kBorderNames.at(static_cast<std::size_t>(border)) : "own border")
         << (options.edgeExtends ? " that extends" : "") << std::hexfloat << ", outside value "
         << options.outside << ", "
         << (options.overflow == Overflow::WRAP ? "wrapping, " : "saturating, ") << options.threads
         << " threads, " << options.subsamples.x << " x " << options.subsamples.y << " x "
         << options.subsamples.z << " sub-samples";
    return text.str();
}

inline std::string described(const AffineMap& map)
{
    std::ostringstream text;
    text << std::hexfloat << "map";
    for (const auto& row : map.rows)
        text << " {" << row[0] << ", " << row[1] << ", " << row[2] << ", " << row[3] << '}';
    return text.str();
}

/// One sample of a source.
template <class T>
std::string describedCall(const VxImage<T>& source, const Position& p, int channel,
                          const Options& options)
{
    std::ostringstream text;
    text << elementTypeName<T>() << " at " << std::hexfloat << p.x << ' ' << p.y << ' ' << p.z
         << " channel " << channel << ", " << described(options)
         << ", source: " << fieldsOf(source);
    return text.str();
}

}  // namespace volux::test
