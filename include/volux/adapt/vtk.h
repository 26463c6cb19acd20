/// @file
/// Images of VTK 9 as views and geometries, and back, without a copy.
///
/// Only programs that include this header need VTK (CommonCore and CommonDataModel); volux_resample
/// does not. Images are vtkImageData with interleaved point scalars; components become channels.
/// Scalars of a type that no VxImage has, such as VTK_CHAR, are refused when the program runs.
///
/// Misuse throws std::invalid_argument with a sentence, before anything is changed.
///
/// Every function is O(1), besides the allocation of newVtkImage(). As VTK's own accessors, none
/// may run while another thread uses the same vtkImageData.
#pragma once

#include <vtkAOSDataArrayTemplate.h>
#include <vtkDataArray.h>
#include <vtkImageData.h>
#include <vtkMatrix3x3.h>
#include <vtkPointData.h>
#include <vtkSmartPointer.h>
#include <vtkTypeTraits.h>

#include <algorithm>
#include <limits>
#include <string>
#include <type_traits>

#include "volux/adapt/detail/Handover.h"

namespace volux::adapt {

/// Where the voxels of viewOf() are in the world. The first voxel of the image's extent becomes
/// voxel (0, 0, 0); a negative spacing becomes a positive one with the opposite direction.
/// @throws std::invalid_argument if the image is null.
inline resample::Geometry geometryOf(vtkImageData* image)
{
    detail::require(image != nullptr, "the image is a null pointer");
    int size[3];
    image->GetDimensions(size);
    int extent[6];
    image->GetExtent(extent);
    double origin[3];
    image->TransformIndexToPhysicalPoint(extent[0], extent[2], extent[4], origin);
    const double* const spacing = image->GetSpacing();
    resample::Geometry geometry;
    geometry.width = static_cast<unsigned int>(std::max(size[0], 0));
    geometry.height = static_cast<unsigned int>(std::max(size[1], 0));
    geometry.depth = static_cast<unsigned int>(std::max(size[2], 0));
    geometry.spacing = core::VoxelSize(spacing[0], spacing[1], spacing[2]);
    geometry.origin = {origin[0], origin[1], origin[2]};
    for (int row = 0; row < 3; ++row)
        for (int axis = 0; axis < 3; ++axis)
            geometry.direction[row][axis] = image->GetDirectionMatrix()->GetElement(row, axis);
    return detail::withoutNegativeSpacing(geometry);
}

namespace detail {

inline vtkDataArray* scalarsOf(vtkImageData* image)
{
    require(image != nullptr, "the image is a null pointer");
    vtkDataArray* const scalars = image->GetPointData()->GetScalars();
    require(scalars != nullptr, "the vtkImageData has no scalars; Update() its source");
    return scalars;
}

template <class T>
vtkAOSDataArrayTemplate<T>* elementsAs(vtkDataArray* scalars)
{
    auto* const elements = vtkArrayDownCast<vtkAOSDataArrayTemplate<T>>(scalars);
    require(elements != nullptr, std::string("a view of ") + vtkTypeTraits<T>::Name() +
                                     " needs interleaved scalars of that type; these are " +
                                     scalars->GetDataTypeAsString() + " in a " +
                                     scalars->GetClassName());
    return elements;
}

inline int dimensionOf(unsigned int voxels)
{
    require(voxels <= static_cast<unsigned int>(std::numeric_limits<int>::max()),
            "VTK counts voxels and channels in int");
    return static_cast<int>(voxels);
}

inline vtkSmartPointer<vtkImageData> placed(const resample::Geometry& geometry)
{
    auto image = vtkSmartPointer<vtkImageData>::New();
    image->SetDimensions(dimensionOf(geometry.width), dimensionOf(geometry.height),
                         dimensionOf(geometry.depth));
    image->SetSpacing(geometry.spacing.x, geometry.spacing.y, geometry.spacing.z);
    image->SetOrigin(geometry.origin.x, geometry.origin.y, geometry.origin.z);
    image->SetDirectionMatrix(&geometry.direction[0][0]);
    return image;
}

}  // namespace detail

/// The voxels of the whole extent, as T, which must be the type of the scalars, or const. They are
/// the image's: the view is valid until its scalars are replaced, reallocated or destroyed. After
/// writing call `image->Modified()`.
/// @throws std::invalid_argument if the image is null or has no scalars, if these are of another
///         type or not interleaved in memory, or if they are not one tuple for each voxel.
template <class T>
resample::View<T> viewOf(vtkImageData* image)
{
    using Element = std::remove_const_t<T>;
    auto* const elements = detail::elementsAs<Element>(detail::scalarsOf(image));
    detail::require(elements->GetNumberOfTuples() == image->GetNumberOfPoints(),
                    "the scalars are not one tuple for each voxel");
    const resample::Geometry geometry = geometryOf(image);
    resample::View<T> view(elements->GetPointer(0), geometry.width, geometry.height, geometry.depth,
                           static_cast<unsigned int>(elements->GetNumberOfComponents()));
    view.spacing = geometry.spacing;
    return view;
}

/// Likewise of the type that the scalars have, which is known only while the program runs.
/// @throws std::invalid_argument likewise; also for scalars of a type that no VxImage has.
inline resample::View<void> viewOf(vtkImageData* image)
{
    switch (detail::scalarsOf(image)->GetDataType()) {
        case VTK_UNSIGNED_CHAR:
            return viewOf<unsigned char>(image);
        case VTK_SHORT:
            return viewOf<short>(image);
        case VTK_UNSIGNED_SHORT:
            return viewOf<unsigned short>(image);
        case VTK_INT:
            return viewOf<int>(image);
        case VTK_UNSIGNED_INT:
            return viewOf<unsigned int>(image);
        case VTK_FLOAT:
            return viewOf<float>(image);
        default:  // which refuses all but double
            return viewOf<double>(image);
    }
}

/// An image of VTK that uses the view's memory, which must outlive it: VTK never frees it. Its
/// extent begins at 0.
/// @throws std::invalid_argument if the view has no voxels or gaps between them (vtkImageData knows
///         no strides), another size than the geometry, or more voxels along an axis than `int`
///         counts.
template <class T>
vtkSmartPointer<vtkImageData> vtkImageOf(const resample::View<T>& view,
                                         const resample::Geometry& geometry)
{
    static_assert(!std::is_const_v<T>,
                  "VTK may write to any vtkImageData: pass a View<T> of "
                  "voxels that it may write, not a View<const T>.");
    detail::requireHandover(view, geometry);
    auto image = detail::placed(geometry);
    auto scalars = vtkSmartPointer<vtkDataArray>::Take(
        vtkDataArray::CreateDataArray(vtkTypeTraits<T>::VTK_TYPE_ID));
    scalars->SetName("ImageScalars");
    scalars->SetNumberOfComponents(detail::dimensionOf(view.channels));
    const int keep = 1;  // the memory is not VTK's
    detail::elementsAs<T>(scalars)->SetArray(
        view.data, static_cast<vtkIdType>(detail::elementsOf(view)), keep);
    image->GetPointData()->SetScalars(scalars);
    return image;
}

/// A new image of VTK, which owns its voxels: a place for a result, to be written through viewOf().
/// Its voxels are not set.
/// @throws std::invalid_argument if there are more voxels along an axis than `int` counts.
template <class T>
vtkSmartPointer<vtkImageData> newVtkImage(const resample::Geometry& geometry,
                                          unsigned int channels = 1)
{
    detail::requireElementType<T>();
    auto image = detail::placed(geometry);
    image->AllocateScalars(vtkTypeTraits<T>::VTK_TYPE_ID, detail::dimensionOf(channels));
    return image;
}

}  // namespace volux::adapt
