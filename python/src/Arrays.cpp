#include "Arrays.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

namespace volux::python {
namespace {

struct ElementType {
    nb::dlpack::dtype type;
    core::DataType tag;
};

constexpr ElementType kElementTypes[] = {
    {nb::dtype<unsigned char>(), core::DT_UCHAR},   {nb::dtype<short>(), core::DT_SHORT},
    {nb::dtype<unsigned short>(), core::DT_USHORT}, {nb::dtype<int>(), core::DT_INT},
    {nb::dtype<unsigned int>(), core::DT_UINT},     {nb::dtype<float>(), core::DT_FLOAT},
    {nb::dtype<double>(), core::DT_DOUBLE},
};

/// Extents that do not fit are refused by the call, as all above 2^31 - 1 are.
unsigned int extentOf(std::size_t voxels)
{
    constexpr std::size_t kMost = std::numeric_limits<unsigned int>::max();
    return static_cast<unsigned int>(std::min(voxels, kMost));
}

/// Null for a type that is not served.
const ElementType* elementOf(nb::dlpack::dtype type)
{
    const ElementType* const found =
        std::find_if(std::begin(kElementTypes), std::end(kElementTypes),
                     [&](const ElementType& element) { return element.type == type; });
    return found == std::end(kElementTypes) ? nullptr : found;
}

template <class View, class Array>
View viewOfArray(const Array& array)
{
    if (array.ndim() != 4) {
        throw nb::value_error("an array of voxels has the axes x, y, z and channel");
    }
    View view;
    view.type = typeOf(array.dtype());
    view.data = array.data();
    view.width = extentOf(array.shape(0));
    view.height = extentOf(array.shape(1));
    view.depth = extentOf(array.shape(2));
    view.channels = extentOf(array.shape(3));
    view.strideX = array.stride(0);
    view.strideY = array.stride(1);
    view.strideZ = array.stride(2);
    view.strideC = array.stride(3);
    return view;
}

}  // namespace

core::DataType typeOf(nb::dlpack::dtype type)
{
    const ElementType* const element = elementOf(type);
    if (element == nullptr) {
        throw nb::value_error("voxels are uint8, int16, uint16, int32, uint32, float32 or float64");
    }
    return element->tag;
}

resample::View<const void> viewOf(const Source& array)
{
    return viewOfArray<resample::View<const void>>(array);
}

resample::View<void> viewOf(const Destination& array)
{
    return viewOfArray<resample::View<void>>(array);
}

std::optional<resample::View<const void>> volumeOf(const Source& array)
{
    const ElementType* const element = elementOf(array.dtype());
    if (array.ndim() != 3 || element == nullptr || !isAligned(array)) {
        return std::nullopt;
    }
    resample::View<const void> view;
    view.type = element->tag;
    view.data = array.data();
    view.width = extentOf(array.shape(2));
    view.height = extentOf(array.shape(1));
    view.depth = extentOf(array.shape(0));
    view.strideX = array.stride(2);
    view.strideY = array.stride(1);
    view.strideZ = array.stride(0);
    return view;
}

resample::Positions positionsOf(const Points& points)
{
    const double* const x = points.data();
    return {x, x + points.stride(1), x + 2 * points.stride(1), points.stride(0)};
}

}  // namespace volux::python
