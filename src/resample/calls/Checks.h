// The checks of arguments that several calls make. Each refuses with the code that callers see.
#pragma once

#include "resample/rows/UntypedImage.h"
#include "volux/core/ErrorType.h"
#include "volux/core/Geometry.h"
#include "volux/core/VxImage.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Resample.h"

namespace volux::resample::detail {

// The bytes from `first` to before `end`.
struct Memory {
    const void* first;
    const void* end;
};

bool areApart(const Memory& a, const Memory& b);

// From the first to the last element, gaps included.
Memory memoryOf(const UntypedImage& image);

// The getter is not const, but only reads.
template <class T>
core::VoxelSize spacingOf(const core::VxImage<T>& image)
{
    return const_cast<core::VxImage<T>&>(image).getVoxelSize();
}

// Finite and above 0.
bool isSpacing(const core::VoxelSize& spacing);

core::ErrorType checkSource(const UntypedImage& source);
core::ErrorType checkExtents(const ResampleRegion& region);
core::ErrorType checkGrid(const Grid& grid, const Slab& slab);
core::ErrorType checkBox(const core::Rect& box, const Grid& grid);

// Refuses a destination that overlaps the source, or whose voxels overlap.
core::ErrorType checkOverlap(const UntypedImage& source, const UntypedImage& destination);

}  // namespace volux::resample::detail
