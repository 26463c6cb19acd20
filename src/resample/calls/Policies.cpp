#include "Policies.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "exact/KnownPolicy.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::resample::detail {

using core::ErrorType;

namespace {

template <class T>
bool holds(double value)
{
    using Limits = std::numeric_limits<T>;
    return std::is_floating_point_v<T> ||
           (value >= static_cast<double>(Limits::lowest()) &&
            value <= static_cast<double>(Limits::max()) && std::trunc(value) == value);
}

}  // namespace

template <class T>
ErrorType readingOf(const Options& options, Reading& reading)
{
    if (options.interpolator == nullptr || options.border == nullptr) {
        return core::ERR_NULL_POINTER;
    }
    if (!holds<T>(options.outside)) {
        return core::ERR_INVALID_ARGUMENT;
    }
    using exact::isExactly;
    const bool isConstant = isExactly<core::Constant>(options.border);
    const bool isNearest = isExactly<core::NearestNeighbor>(options.interpolator);
    const bool isCubic = isExactly<core::Cubic>(options.interpolator);
    reading.kernel = isNearest ? Kernel::NEAREST : isCubic ? Kernel::CUBIC : Kernel::LINEAR;
    reading.outside = {isConstant, static_cast<double>(static_cast<T>(options.outside))};
    reading.isOwn = !(isNearest || isCubic || isExactly<core::Linear>(options.interpolator)) ||
                    !(isConstant || isExactly<core::Replication>(options.border));
    reading.edgeEnds = !reading.isOwn && !isConstant && !options.edgeExtends;
    return core::SUCCESS;
}

#define VOLUX_READING(T) template ErrorType readingOf<T>(const Options&, Reading&);
VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_READING)
#undef VOLUX_READING

}  // namespace volux::resample::detail

#undef VOLUX_FOR_EACH_ELEMENT_TYPE
