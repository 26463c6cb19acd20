/// @file
/// Images of ITK 5 as views and geometries, and back, without a copy.
///
/// Only programs that include this header need ITK; volux_resample does not. Pixels may be numbers,
/// or arrays of a fixed length (itk::RGBPixel, itk::Vector, itk::FixedArray), whose elements become
/// channels. The compiler refuses elements that no VxImage has, such as `char` and `long`.
///
/// Misuse throws std::invalid_argument with a sentence, before anything is changed. What ITK itself
/// refuses, such as a spacing of 0, throws its itk::ExceptionObject.
///
/// Every function is O(1), besides the allocation of newItkImage(). They may run in any number of
/// threads while nobody changes the image.
#pragma once

#include <itkImage.h>
#include <itkVectorImage.h>

#include <cstddef>
#include <limits>
#include <type_traits>

#include "volux/adapt/detail/Handover.h"

namespace volux::adapt {

namespace detail {

// What a pixel is made of: a number of itself, or an array of its elements.
template <class Pixel, class = void>
struct PixelParts {
    using Element = Pixel;
    static constexpr unsigned int kChannels = 1;
};

template <class Pixel>
struct PixelParts<Pixel, std::void_t<typename Pixel::ValueType, decltype(Pixel::Length)>> {
    using Element = typename Pixel::ValueType;
    static constexpr unsigned int kChannels = Pixel::Length;
    static_assert(sizeof(Pixel) == kChannels * sizeof(Element),
                  "volux::adapt takes pixels that are nothing but an array of their elements.");
};

template <class Pixel>
using ElementOf = typename PixelParts<Pixel>::Element;

inline unsigned int extentOf(itk::SizeValueType voxels)
{
    require(voxels <= std::numeric_limits<unsigned int>::max(), "an axis of the image is too long");
    return static_cast<unsigned int>(voxels);
}

}  // namespace detail

/// Where a region of an image is in the world; its first voxel becomes voxel (0, 0, 0), whatever
/// its index. The image needs no voxels in memory: this also serves the largest possible region of
/// an image that only knows its information.
inline resample::Geometry geometryOf(const itk::ImageBase<3>* image,
                                     const itk::ImageRegion<3>& region)
{
    detail::require(image != nullptr, "the image is a null pointer");
    const auto origin = image->TransformIndexToPhysicalPoint<double>(region.GetIndex());
    const auto& spacing = image->GetSpacing();
    resample::Geometry geometry;
    geometry.width = detail::extentOf(region.GetSize(0));
    geometry.height = detail::extentOf(region.GetSize(1));
    geometry.depth = detail::extentOf(region.GetSize(2));
    geometry.spacing = core::VoxelSize(spacing[0], spacing[1], spacing[2]);
    geometry.origin = {origin[0], origin[1], origin[2]};
    for (unsigned int row = 0; row < 3; ++row)
        for (unsigned int axis = 0; axis < 3; ++axis)
            geometry.direction[row][axis] = image->GetDirection()(row, axis);
    return detail::withoutNegativeSpacing(geometry);
}

/// Where the voxels of viewOf() are in the world: the geometry of the buffered region.
inline resample::Geometry geometryOf(const itk::ImageBase<3>* image)
{
    detail::require(image != nullptr, "the image is a null pointer");
    return geometryOf(image, image->GetBufferedRegion());
}

namespace detail {

template <class Element, class Image>
resample::View<Element> viewOf(Image* image, unsigned int channels)
{
    const resample::Geometry geometry = geometryOf(image);
    resample::View<Element> view(reinterpret_cast<Element*>(image->GetBufferPointer()),
                                 geometry.width, geometry.height, geometry.depth, channels);
    view.spacing = geometry.spacing;
    using Stored = typename Image::PixelContainer::Element;
    const std::size_t stored = image->GetPixelContainer()->Size() * sizeof(Stored);
    require(view.data != nullptr && stored >= elementsOf(view) * sizeof(Element),
            "the image has no voxels in memory; Update() its filter or Allocate() it");
    return view;
}

template <class Image>
typename Image::Pointer placed(const resample::Geometry& geometry)
{
    auto image = Image::New();
    image->SetRegions(itk::Size<3>{{geometry.width, geometry.height, geometry.depth}});
    const double spacing[] = {geometry.spacing.x, geometry.spacing.y, geometry.spacing.z};
    image->SetSpacing(spacing);
    const double origin[] = {geometry.origin.x, geometry.origin.y, geometry.origin.z};
    image->SetOrigin(origin);
    typename Image::DirectionType direction;
    for (unsigned int row = 0; row < 3; ++row)
        for (unsigned int axis = 0; axis < 3; ++axis)
            direction(row, axis) = geometry.direction[row][axis];
    image->SetDirection(direction);
    return image;
}

// As ITK says that nobody may write.
template <class Image, class T>
using PointerTo = itk::SmartPointer<std::conditional_t<std::is_const_v<T>, const Image, Image>>;

template <class Image, class T>
PointerTo<Image, T> imported(const resample::View<T>& view, const resample::Geometry& geometry)
{
    requireHandover(view, geometry);
    auto image = placed<Image>(geometry);
    image->SetNumberOfComponentsPerPixel(view.channels);
    auto* const first = const_cast<std::remove_const_t<T>*>(view.data);
    image->GetPixelContainer()->SetImportPointer(first, elementsOf(view), false);
    return image.GetPointer();
}

template <class T>
using ImageOf = itk::Image<std::remove_const_t<T>, 3>;
template <class T>
using VectorImageOf = itk::VectorImage<std::remove_const_t<T>, 3>;

}  // namespace detail

/// The voxels of the buffered region, to be read and written. They are the image's: the view is
/// valid until the image is destroyed or reallocated. After writing call `image->Modified()`.
/// @throws std::invalid_argument if the image is null or has no voxels in memory.
template <class Pixel>
resample::View<detail::ElementOf<Pixel>> viewOf(itk::Image<Pixel, 3>* image)
{
    using Element = detail::ElementOf<Pixel>;
    return detail::viewOf<Element>(image, detail::PixelParts<Pixel>::kChannels);
}

/// Likewise, to be read only.
template <class Pixel>
resample::View<const detail::ElementOf<Pixel>> viewOf(const itk::Image<Pixel, 3>* image)
{
    using Element = const detail::ElementOf<Pixel>;
    return detail::viewOf<Element>(image, detail::PixelParts<Pixel>::kChannels);
}

/// Likewise; the components of the vectors are the channels.
template <class T>
resample::View<T> viewOf(itk::VectorImage<T, 3>* image)
{
    detail::require(image != nullptr, "the image is a null pointer");
    return detail::viewOf<T>(image, image->GetVectorLength());
}

/// Likewise, to be read only.
template <class T>
resample::View<const T> viewOf(const itk::VectorImage<T, 3>* image)
{
    detail::require(image != nullptr, "the image is a null pointer");
    return detail::viewOf<const T>(image, image->GetVectorLength());
}

/// Likewise, of what a smart pointer points to.
template <class Image>
auto viewOf(const itk::SmartPointer<Image>& image)
{
    return viewOf(image.GetPointer());
}

/// An image of ITK that uses the view's memory, which must outlive it: ITK never frees it. A
/// `View<T>` gives a pointer to itk::Image<T, 3>, and a `View<const T>` one to a const image, as
/// ITK's filters read their inputs.
/// @throws std::invalid_argument if the view has no voxels, several channels or gaps between its
///         voxels (itk::Image knows no strides), or another size than the geometry.
template <class T>
detail::PointerTo<detail::ImageOf<T>, T> itkImageOf(const resample::View<T>& view,
                                                    const resample::Geometry& geometry)
{
    detail::require(view.channels == 1, "itk::Image has one channel; use itkVectorImageOf");
    return detail::imported<detail::ImageOf<T>>(view, geometry);
}

/// Likewise an itk::VectorImage<T, 3>, of any number of channels.
template <class T>
detail::PointerTo<detail::VectorImageOf<T>, T> itkVectorImageOf(const resample::View<T>& view,
                                                                const resample::Geometry& geometry)
{
    return detail::imported<detail::VectorImageOf<T>>(view, geometry);
}

/// A new image of ITK, which owns its voxels: a place for a result, to be written through viewOf().
/// Its voxels are not set.
template <class Pixel>
typename itk::Image<Pixel, 3>::Pointer newItkImage(const resample::Geometry& geometry)
{
    detail::requireElementType<detail::ElementOf<Pixel>>();
    auto image = detail::placed<itk::Image<Pixel, 3>>(geometry);
    image->Allocate();
    return image;
}

}  // namespace volux::adapt
