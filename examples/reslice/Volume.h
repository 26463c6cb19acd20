// A volume whose axes run to the patient's right, front and top, whatever its element type.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "Axes.h"
#include "volux/core.h"

namespace reslice {

namespace core = volux::core;

/// Millimetres from the centre of the first voxel.
struct Point {
    double x, y, z;
};

/// The axial (xy), sagittal (yz) and coronal (zx) planes.
enum class Cut { AXIAL, SAGITTAL, CORONAL };

/// What a file says about its voxels, in the order in which it stores them.
struct Layout {
    std::string path;
    std::array<unsigned int, 3> extent;
    std::array<double, 3> spacing;  ///< millimetres
    Axes axes;
    double slope = 1.0;  ///< displayed intensity = slope * stored value + intercept
    double intercept = 0.0;
};

/// An image of any element type.
using AnyImage = std::variant<const core::VxImage<unsigned char>*, const core::VxImage<short>*,
                              const core::VxImage<unsigned short>*, const core::VxImage<int>*,
                              const core::VxImage<unsigned int>*, const core::VxImage<float>*,
                              const core::VxImage<double>*>;

/// Voxels keep the type of the file. Every value that leaves this class is a displayed intensity,
/// except those of image().
class Volume {
public:
    explicit Volume(Layout layout);
    virtual ~Volume() = default;

    const std::string& path() const { return layout_.path; }
    std::string name() const;  ///< the last part of the path
    bool orientationKnown() const { return layout_.axes.known; }

    /// Along the patient's axes.
    core::ImageSize size() const;
    core::VoxelSize spacing() const;
    Point extent() const;  ///< millimetres, from face to face
    double longestSide() const;
    Point centre() const;

    virtual double sample(const Point& at, core::Interpolator* interpolator, core::Border* border,
                          double outside) const = 0;

    /// The intensity nearest to the given one that a voxel can hold.
    double storable(double intensity) const { return shown(stored(intensity)); }

    /// The voxels as they are stored, for code that reads all of them.
    virtual AnyImage image() const = 0;
    virtual double stored(double intensity) const = 0;
    double shown(double value) const { return layout_.slope * value + layout_.intercept; }

    /// Copies the slice with the plane functions, and the spacing of the plane.
    virtual void slice(Cut cut, unsigned int index, core::VxImage<double>* plane) const = 0;

    /// A selection of at most `count` intensities from all over the volume; finite ones only.
    virtual std::vector<double> someIntensities(std::size_t count) const = 0;

    const Layout& layout() const { return layout_; }

private:
    Layout layout_;
};

/// Takes voxels of type T that `voxels` keeps alive. Wraps them if the file's axes are the
/// patient's; otherwise copies them into that order.
template <class T>
std::unique_ptr<Volume> makeVolume(const Layout& layout, std::shared_ptr<void> voxels);

}  // namespace reslice
