// The border policies, their tables, and the fallback that throws.
#include "../ThrowSites.h"
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/VxImage.h"

namespace volux::core {

template <class T>
T Border::stub(const VxImage<T>&, int, int, int, unsigned int, T, unsigned int, unsigned int,
               unsigned int)
{
    detail::raise(detail::kBorderWithoutTable);
}

#define VOLUX_TEMPLATE template
#include "volux/core/detail/instantiations/BorderStubs.inc"

#include "volux/core/detail/ElementTypes.inc"

using BorderTable = Border::border_t<Border, Border::Empty>;

#define VOLUX_FETCH(T)                                                                          \
    T BorderTable::fetch(Border&, const VxImage<T>& image, int x, int y, int z, unsigned int c, \
                         T value, unsigned int width, unsigned int height, unsigned int depth)  \
    {                                                                                           \
        return stub<T>(image, x, y, z, c, value, width, height, depth);                         \
    }
VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_FETCH)
#undef VOLUX_FETCH

BorderTable::~border_t() = default;

BorderTable& Constant::get()
{
    static border_t<Constant, Border> table;
    return table;
}

BorderTable& Replication::get()
{
    static border_t<Replication, Border> table;
    return table;
}

}  // namespace volux::core
