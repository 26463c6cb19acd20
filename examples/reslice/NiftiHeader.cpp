#include "NiftiHeader.h"

#include <nifti1_io.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Failure.h"
#include "GzipFile.h"
#include "ShortNumber.h"

namespace reslice {
namespace {

constexpr int kHeaderBytes = 348;
constexpr int kNifti2HeaderBytes = 540;

int swapped(int value)
{
    nifti_swap_4bytes(1, &value);
    return value;
}

nifti_1_header readHeader(GzipFile& file)
{
    nifti_1_header header{};
    const bool whole = file.read(&header, sizeof header) == sizeof header;
    const int size = header.sizeof_hdr;
    if (size == kNifti2HeaderBytes || swapped(size) == kNifti2HeaderBytes)
        cannotRead(file.path(), "it is a NIfTI-2 file, and only NIfTI-1 is supported");
    if (!whole || (size != kHeaderBytes && swapped(size) != kHeaderBytes))
        cannotRead(file.path(), "it is not a NIfTI-1 file");
    if (size != kHeaderBytes)
        swap_nifti_header(&header, 1);
    return header;
}

void requireSingleFile(const nifti_1_header& header, const std::string& path)
{
    if (std::memcmp(header.magic, "ni1", 4) == 0)
        cannotRead(path, "its voxels are in a second file, and only single files are supported");
    if (std::memcmp(header.magic, "n+1", 4) != 0)
        cannotRead(path, "it is not a NIfTI-1 file");
}

bool endsIn(const std::string& path, const std::string& suffix)
{
    return path.size() > suffix.size() &&
           path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
}

/// niftiio goes by the name, and complains on the error stream of some that it cannot use.
void requireSuffix(const GzipFile& file)
{
    const bool plain = endsIn(file.path(), ".nii");
    if (!plain && !endsIn(file.path(), ".nii.gz"))
        cannotRead(file.path(), "the name of a NIfTI-1 file ends in .nii or .nii.gz");
    if (plain && file.isCompressed())
        cannotRead(file.path(), "it is compressed, so its name must end in .nii.gz");
}

void requireExtents(const nifti_1_header& header, const std::string& path)
{
    if (header.dim[0] < 1 || header.dim[0] > 7)
        cannotRead(path, "its header gives " + std::to_string(header.dim[0]) + " dimensions");
    for (int axis = 1; axis <= header.dim[0]; ++axis)
        if (header.dim[axis] < 1)
            cannotRead(path, "its header gives dimension " + std::to_string(axis) + " the extent " +
                                 std::to_string(header.dim[axis]));
}

void requireSpacing(const nifti_1_header& header, const std::string& path)
{
    for (int axis = 1; axis <= std::min<int>(3, header.dim[0]); ++axis)
        if (!std::isfinite(header.pixdim[axis]) || header.pixdim[axis] <= 0.0F)
            cannotRead(path, "its header gives dimension " + std::to_string(axis) +
                                 " the voxel spacing " + shortNumber(header.pixdim[axis]));
}

/// 0 where none of the element types of an image is the file's.
unsigned int bytesPerVoxel(short datatype)
{
    switch (datatype) {
        case NIFTI_TYPE_UINT8:
            return 1;
        case NIFTI_TYPE_INT16:
        case NIFTI_TYPE_UINT16:
            return 2;
        case NIFTI_TYPE_INT32:
        case NIFTI_TYPE_UINT32:
        case NIFTI_TYPE_FLOAT32:
            return 4;
        case NIFTI_TYPE_FLOAT64:
            return 8;
        default:
            return 0;
    }
}

void requireElementType(const nifti_1_header& header, const std::string& path)
{
    const unsigned int bytes = bytesPerVoxel(header.datatype);
    if (bytes == 0)
        cannotRead(path, std::string("its element type ") +
                             nifti_datatype_to_string(header.datatype) + " is not supported");
    if (header.bitpix != static_cast<short>(8 * bytes))
        cannotRead(path, "its header gives " + std::to_string(header.bitpix) +
                             " bits to a voxel of " + std::to_string(8 * bytes));
}

unsigned long long bytesNeeded(const nifti_1_header& header, const std::string& path)
{
    const double offset = header.vox_offset;
    if (!(offset >= kHeaderBytes && offset < 2147483648.0))
        cannotRead(path, "its header puts the voxels at byte " + shortNumber(offset));
    return voxelBytes(header) + static_cast<unsigned long long>(offset);
}

/// Reads one byte more, because the checksum of a compressed file is tested at its end.
void requireBytes(GzipFile& file, unsigned long long needed)
{
    const unsigned long long present = kHeaderBytes + file.skip(needed - kHeaderBytes + 1);
    if (present < needed)
        cannotRead(file.path(), "it ends after " + std::to_string(present) + " of " +
                                    std::to_string(needed) + " bytes");
}

}  // namespace

std::size_t voxelBytes(const nifti_1_header& header)
{
    std::size_t bytes = bytesPerVoxel(header.datatype);
    for (int axis = 1; axis <= std::min<int>(3, header.dim[0]); ++axis)
        bytes *= static_cast<std::size_t>(header.dim[axis]);
    return bytes;
}

nifti_1_header soundHeader(const std::string& path)
{
    GzipFile file(path);
    const nifti_1_header header = readHeader(file);
    requireSingleFile(header, path);
    requireSuffix(file);
    requireExtents(header, path);
    requireSpacing(header, path);
    requireElementType(header, path);
    requireBytes(file, bytesNeeded(header, path));
    return header;
}

}  // namespace reslice
