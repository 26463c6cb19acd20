#include "Policies.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "exact/ElementTypes.h"
#include "exact/KnownPolicy.h"
#include "volux/resample/Labels.h"

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

ErrorType readingOf(core::DataType type, const Options& options, Reading& reading)
{
    return exact::withElementType(type, [&](auto element) -> ErrorType {
        using T = typename decltype(element)::Type;
        if (!holds<T>(options.outside)) {
            return core::ERR_INVALID_ARGUMENT;
        }
        using exact::isExactly;
        const bool isConstant = isExactly<core::Constant>(options.border);
        const bool isNearest = isExactly<core::NearestNeighbor>(options.interpolator);
        const bool isCubic = isExactly<core::Cubic>(options.interpolator);
        reading.kernel = isNearest ? Kernel::NEAREST : isCubic ? Kernel::CUBIC : Kernel::LINEAR;
        reading.outside = {isConstant, static_cast<double>(static_cast<T>(options.outside))};
        reading.isLabels = isExactly<Labels>(options.interpolator);
        reading.isOwn = !(isNearest || isCubic || reading.isLabels ||
                          isExactly<core::Linear>(options.interpolator)) ||
                        !(isConstant || isExactly<core::Replication>(options.border));
        reading.edgeEnds = !reading.isOwn && !isConstant && !options.edgeExtends;
        return core::SUCCESS;
    });
}

}  // namespace volux::resample::detail
