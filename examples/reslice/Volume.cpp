#include "Volume.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

namespace reslice {
namespace {

/// Sizes are tested when a file is read, so only a lack of memory can fail here.
void requireSuccess(core::ErrorType code)
{
    if (code != core::SUCCESS)
        throw std::bad_alloc();
}

template <class T>
class VolumeOf final : public Volume {
public:
    VolumeOf(const Layout& layout, std::shared_ptr<void> voxels);

    double sample(const Point& at, core::Interpolator* interpolator, core::Border* border,
                  double outside) const override;
    AnyImage image() const override { return &image_; }
    double stored(double intensity) const override
    {
        return static_cast<double>(nearest(intensity));
    }
    void slice(Cut cut, unsigned int index, core::VxImage<double>* plane) const override;
    std::vector<double> someIntensities(std::size_t count) const override;

private:
    void copyInOrder(const T* stored);
    T nearest(double intensity) const;

    std::shared_ptr<void> voxels_;
    core::VxImage<T> image_;
};

template <class T>
VolumeOf<T>::VolumeOf(const Layout& layout, std::shared_ptr<void> voxels)
    : Volume(layout), voxels_(std::move(voxels))
{
    const core::ImageSize extents = size();
    T* stored = static_cast<T*>(voxels_.get());
    if (layout.axes.asStored()) {
        requireSuccess(
            image_.initializeWithPointer(stored, extents.width, extents.height, extents.depth, 1));
    } else {
        requireSuccess(image_.initialize(extents.width, extents.height, extents.depth, 1));
        copyInOrder(stored);
        voxels_.reset();
    }
    requireSuccess(image_.setVoxelSize(spacing()));
}

/// Walks the patient's axes; along each, the step within the file and the end to start from.
template <class T>
void VolumeOf<T>::copyInOrder(const T* stored)
{
    const auto& [source, reversed, known] = layout().axes;
    const auto& extent = layout().extent;
    const std::array<std::ptrdiff_t, 3> stride = {
        1, static_cast<std::ptrdiff_t>(extent[0]),
        static_cast<std::ptrdiff_t>(extent[0]) * static_cast<std::ptrdiff_t>(extent[1])};
    std::array<std::ptrdiff_t, 3> step{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t from = source[axis];
        step[axis] = reversed[axis] ? -stride[from] : stride[from];
        if (reversed[axis])
            stored += stride[from] * static_cast<std::ptrdiff_t>(extent[from] - 1);
    }
    const core::ImageSize extents = size();
    for (int z = 0; z < static_cast<int>(extents.depth); ++z)
        for (int y = 0; y < static_cast<int>(extents.height); ++y)
            for (int x = 0; x < static_cast<int>(extents.width); ++x)
                image_(x, y, z, 0) = stored[step[0] * x + step[1] * y + step[2] * z];
}

template <class T>
T VolumeOf<T>::nearest(double intensity) const
{
    const double lowest = static_cast<double>(std::numeric_limits<T>::lowest());
    const double highest = static_cast<double>(std::numeric_limits<T>::max());
    const double value = (intensity - layout().intercept) / layout().slope;
    const double held = std::clamp(value, lowest, highest);
    return static_cast<T>(std::is_integral_v<T> ? std::round(held) : held);
}

template <class T>
double VolumeOf<T>::sample(const Point& at, core::Interpolator* interpolator, core::Border* border,
                           double outside) const
{
    return shown(
        image_.getDoubleValueReal(at.x, at.y, at.z, 0, interpolator, border, nearest(outside)));
}

template <class T>
void VolumeOf<T>::slice(Cut cut, unsigned int index, core::VxImage<double>* plane) const
{
    const auto [x, y, z] = spacing();
    core::VxImage<T> voxels;
    core::VoxelSize edges;
    if (cut == Cut::AXIAL) {
        requireSuccess(core::getXyPlane(index, image_, &voxels));
        edges = {x, y, z};
    } else if (cut == Cut::SAGITTAL) {
        requireSuccess(core::getYzPlane(index, image_, &voxels));
        edges = {y, z, x};
    } else {
        requireSuccess(core::getZxPlane(index, image_, &voxels));
        edges = {z, x, y};
    }
    requireSuccess(plane->setImageSize(voxels.getWidth(), voxels.getHeight(), 1, 1));
    requireSuccess(plane->setVoxelSize(edges));
    std::transform(voxels.getBufferPointer(),
                   voxels.getBufferPointer() + std::size_t{voxels.getWidth()} * voxels.getHeight(),
                   plane->getBufferPointer(),
                   [this](T value) { return shown(static_cast<double>(value)); });
}

template <class T>
std::vector<double> VolumeOf<T>::someIntensities(std::size_t count) const
{
    const core::ImageSize extents = size();
    const std::size_t total = std::size_t{extents.width} * extents.height * extents.depth;
    const std::size_t step = total / count + 1;
    std::vector<double> intensities;
    for (std::size_t n = 0; n < total; n += step) {
        const double intensity = shown(static_cast<double>(image_.getBufferPointer()[n]));
        if (std::isfinite(intensity))
            intensities.push_back(intensity);
    }
    return intensities;
}

}  // namespace

Volume::Volume(Layout layout) : layout_(std::move(layout)) {}

std::string Volume::name() const
{
    return std::filesystem::path(layout_.path).filename().string();
}

core::ImageSize Volume::size() const
{
    const auto& [axes, extent] = std::tie(layout_.axes.source, layout_.extent);
    return {extent[axes[0]], extent[axes[1]], extent[axes[2]], 1};
}

core::VoxelSize Volume::spacing() const
{
    const auto& [axes, spacing] = std::tie(layout_.axes.source, layout_.spacing);
    return {spacing[axes[0]], spacing[axes[1]], spacing[axes[2]]};
}

Point Volume::extent() const
{
    const core::ImageSize extents = size();
    const core::VoxelSize edges = spacing();
    return {extents.width * edges.x, extents.height * edges.y, extents.depth * edges.z};
}

double Volume::longestSide() const
{
    const Point sides = extent();
    return std::max({sides.x, sides.y, sides.z});
}

Point Volume::centre() const
{
    const core::ImageSize extents = size();
    const core::VoxelSize edges = spacing();
    return {(extents.width - 1) * edges.x / 2, (extents.height - 1) * edges.y / 2,
            (extents.depth - 1) * edges.z / 2};
}

template <class T>
std::unique_ptr<Volume> makeVolume(const Layout& layout, std::shared_ptr<void> voxels)
{
    return std::make_unique<VolumeOf<T>>(layout, std::move(voxels));
}

template std::unique_ptr<Volume> makeVolume<unsigned char>(const Layout&, std::shared_ptr<void>);
template std::unique_ptr<Volume> makeVolume<short>(const Layout&, std::shared_ptr<void>);
template std::unique_ptr<Volume> makeVolume<unsigned short>(const Layout&, std::shared_ptr<void>);
template std::unique_ptr<Volume> makeVolume<int>(const Layout&, std::shared_ptr<void>);
template std::unique_ptr<Volume> makeVolume<unsigned int>(const Layout&, std::shared_ptr<void>);
template std::unique_ptr<Volume> makeVolume<float>(const Layout&, std::shared_ptr<void>);
template std::unique_ptr<Volume> makeVolume<double>(const Layout&, std::shared_ptr<void>);

}  // namespace reslice
