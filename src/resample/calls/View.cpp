#include "volux/resample/View.h"

#include "exact/ElementTypes.h"
#include "exact/Layout.h"

namespace volux::resample::detail {

View<void> viewOfImage(const void* image, core::DataType type)
{
    return exact::withElementType(type, [&](auto element) {
        using T = typename decltype(element)::Type;
        // The getter of the spacing is not const, but only reads.
        auto& typed = *static_cast<core::VxImage<T>*>(const_cast<void*>(image));
        const core::detail::Layout<T> layout(typed);
        View<T> view(layout.data, typed.getWidth(), typed.getHeight(), typed.getDepth(),
                     typed.getChannels());
        view.strideX = layout.strideX;
        view.strideY = layout.strideY;
        view.strideZ = layout.strideZ;
        view.strideC = layout.strideC;
        view.spacing = typed.getVoxelSize();
        return View<void>(view);
    });
}

}  // namespace volux::resample::detail
