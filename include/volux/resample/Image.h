/// @file
/// An owner of an image that can be returned, stored in containers and handed on.
#pragma once

#include <memory>

#include "volux/core/Geometry.h"
#include "volux/core/VxImage.h"
#include "volux/resample/View.h"

namespace volux::resample {

/// Owns a core::VxImage, which can be neither moved nor copied and whose getters of size and
/// spacing are not const. Moving an Image hands the image on; its voxels stay where they are.
///
/// An object that has been moved from has no image: calls refuse it with ERR_NULL_POINTER, its view
/// has no voxels, and nothing else may be asked of it before it is given another one.
///
/// Errors and threads: those of the image. Making an Image throws std::bad_alloc where there is no
/// memory for the image itself; the voxels are allocated by the image, which reports that.
template <class T>
class Image {
public:
    /// Owns an Empty image.
    Image() : image_(std::make_unique<core::VxImage<T>>()) {}

    /// @{
    /// The image; a const one for a const owner.
    core::VxImage<T>& operator*() { return *image_; }
    const core::VxImage<T>& operator*() const { return *image_; }
    core::VxImage<T>* operator->() { return image_.get(); }
    const core::VxImage<T>* operator->() const { return image_.get(); }
    /// @}

    /// Voxels along each axis, and channels.
    core::ImageSize size() const { return image_->getImageSize(); }

    /// Physical units per voxel.
    core::VoxelSize spacing() const { return image_->getVoxelSize(); }

    /// @{
    /// The voxels where they are, as viewOf() gives them.
    View<T> view() { return image_ == nullptr ? View<T>() : viewOf(*image_); }
    View<const T> view() const { return image_ == nullptr ? View<T>() : viewOf(*image_); }
    /// @}

private:
    std::unique_ptr<core::VxImage<T>> image_;
};

}  // namespace volux::resample
