// The interpolation policies, their tables, and the fallbacks that throw.
#include "../ThrowSites.h"
#include "volux/core/InterpolationType.h"
#include "volux/core/VxImage.h"

namespace volux::core {

template <class T, class B>
double Interpolator::stub(const VxImage<T>&, double, double, double, unsigned int, B, T)
{
    detail::raise(detail::kInterpolatorWithoutTable);
}

template <class T, class B>
double Interpolator::stub_p(const VxImage<T>&, double, double, double, unsigned int, Border*, T)
{
    detail::raise(detail::kInterpolatorWithoutTableRunTimeBorder);
}

#define VOLUX_TEMPLATE template
#include "volux/core/detail/instantiations/InterpolatorStubs.inc"

#include "volux/core/detail/ElementTypes.inc"

using InterpolatorTable = Interpolator::interpolator_t<Interpolator, Interpolator::Empty>;

#define VOLUX_INVOKE(T, B, STUB, STUB_B)                                                         \
    double InterpolatorTable::invoke(Interpolator&, const VxImage<T>& image, double x, double y, \
                                     double z, unsigned int c, B border, T value)                \
    {                                                                                            \
        return STUB<T, STUB_B>(image, x, y, z, c, border, value);                                \
    }
#define VOLUX_INVOKE_EACH_BORDER(T)                 \
    VOLUX_INVOKE(T, Replication, stub, Replication) \
    VOLUX_INVOKE(T, Constant, stub, Constant)       \
    VOLUX_INVOKE(T, Border*, stub_p, Border)
VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_INVOKE_EACH_BORDER)
#undef VOLUX_INVOKE_EACH_BORDER
#undef VOLUX_INVOKE

InterpolatorTable::~interpolator_t() = default;

InterpolatorTable& NearestNeighbor::get()
{
    static interpolator_t<NearestNeighbor, Interpolator> table;
    return table;
}

InterpolatorTable& Linear::get()
{
    static interpolator_t<Linear, Interpolator> table;
    return table;
}

InterpolatorTable& Cubic::get()
{
    static interpolator_t<Cubic, Interpolator> table;
    return table;
}

}  // namespace volux::core
