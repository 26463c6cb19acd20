#include "NiftiFile.h"

#include <nifti1_io.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <new>

#include "Failure.h"
#include "Interrupt.h"
#include "NiftiHeader.h"

namespace reslice {
namespace {

using Image = std::unique_ptr<nifti_image, decltype(&nifti_image_free)>;

Image openNifti(const std::string& path)
{
    nifti_set_debug_level(0);
    Image image(nifti_image_read(path.c_str(), 0), nifti_image_free);
    if (image == nullptr)
        cannotRead(path, "niftiio does not understand its header");
    return image;
}

/// The first volume, in the machine's byte order. Opened by its own name: left to itself, niftiio
/// prefers a neighbour without the .gz.
std::shared_ptr<void> loadVoxels(nifti_image* image, const nifti_1_header& header,
                                 const std::string& path)
{
    const std::size_t bytes = voxelBytes(header);
    std::shared_ptr<void> voxels(std::malloc(bytes), std::free);
    if (voxels == nullptr)
        throw std::bad_alloc();
    znzFile file = znzopen(path.c_str(), "rb", nifti_is_gzfile(path.c_str()));
    const bool whole = !znz_isnull(file) &&
                       znzseek(file, static_cast<long>(header.vox_offset), SEEK_SET) >= 0 &&
                       nifti_read_buffer(file, voxels.get(), bytes, image) == bytes;
    Xznzclose(&file);
    if (!whole)
        cannotRead(path, "its voxels are damaged");
    return voxels;
}

/// niftiio names the direction of an axis by 1 + 2 * the patient's axis, plus 1 if it is reversed.
Axes axesOf(const mat44& toPatient)
{
    std::array<int, 3> codes{};
    nifti_mat44_to_orientation(toPatient, &codes[0], &codes[1], &codes[2]);
    Axes axes;
    unsigned int seen = 0;
    for (unsigned int from = 0; from < 3; ++from) {
        if (codes[from] < NIFTI_L2R || codes[from] > NIFTI_S2I)
            break;
        const auto axis = static_cast<unsigned int>(codes[from] - NIFTI_L2R) / 2;
        axes.source[axis] = from;
        axes.reversed[axis] = (codes[from] - NIFTI_L2R) % 2 == 1;
        seen |= 1U << axis;
    }
    axes.known = seen == 7;
    return axes.known ? axes : Axes{{0, 1, 2}, {false, false, false}, false};
}

/// A degenerate sform says nothing; the qform then counts.
Axes axesOf(const nifti_image& image)
{
    Axes axes{{0, 1, 2}, {false, false, false}, false};
    if (image.sform_code > 0)
        axes = axesOf(image.sto_xyz);
    if (!axes.known && image.qform_code > 0)
        axes = axesOf(image.qto_xyz);
    return axes;
}

double millimetresPerUnit(int unit)
{
    if (unit == NIFTI_UNITS_METER)
        return 1000.0;
    return unit == NIFTI_UNITS_MICRON ? 0.001 : 1.0;
}

/// A slope of 0 says that the stored values are the intensities.
void takeScaling(const nifti_image& image, Layout& layout)
{
    const double slope = image.scl_slope;
    const double intercept = image.scl_inter;
    if (slope == 0.0 || !std::isfinite(slope) || !std::isfinite(intercept))
        return;
    layout.slope = slope;
    layout.intercept = intercept;
}

Layout layoutOf(const nifti_image& image, const nifti_1_header& header, const std::string& path)
{
    Layout layout{path, {1, 1, 1}, {1.0, 1.0, 1.0}, axesOf(image)};
    const double unit = millimetresPerUnit(image.xyz_units);
    for (std::size_t axis = 0;
         axis < std::min<std::size_t>(3, static_cast<std::size_t>(header.dim[0])); ++axis) {
        layout.extent[axis] = static_cast<unsigned int>(header.dim[axis + 1]);
        layout.spacing[axis] = unit * static_cast<double>(header.pixdim[axis + 1]);
    }
    takeScaling(image, layout);
    return layout;
}

std::unique_ptr<Volume> makeVolumeOf(short datatype, const Layout& layout,
                                     const std::shared_ptr<void>& voxels)
{
    switch (datatype) {
        case NIFTI_TYPE_UINT8:
            return makeVolume<unsigned char>(layout, voxels);
        case NIFTI_TYPE_INT16:
            return makeVolume<short>(layout, voxels);
        case NIFTI_TYPE_UINT16:
            return makeVolume<unsigned short>(layout, voxels);
        case NIFTI_TYPE_INT32:
            return makeVolume<int>(layout, voxels);
        case NIFTI_TYPE_UINT32:
            return makeVolume<unsigned int>(layout, voxels);
        case NIFTI_TYPE_FLOAT32:
            return makeVolume<float>(layout, voxels);
        default:
            return makeVolume<double>(layout, voxels);
    }
}

}  // namespace

std::unique_ptr<Volume> readNifti(const std::string& path)
{
    const nifti_1_header header = soundHeader(path);
    const Image image = openNifti(path);
    const std::shared_ptr<void> voxels = loadVoxels(image.get(), header, path);
    stopIfInterrupted(path);
    return makeVolumeOf(header.datatype, layoutOf(*image, header, path), voxels);
}

}  // namespace reslice
