// The checks of arguments that several calls make. Each refuses with the code that callers see.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "resample/rows/UntypedImage.h"
#include "volux/core/DataType.h"
#include "volux/core/ErrorType.h"
#include "volux/core/Geometry.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Resample.h"
#include "volux/resample/Subsamples.h"
#include "volux/resample/View.h"
#include "volux/resample/Warp.h"

namespace volux::resample::detail {

// The addresses from `first` to before `end`.
struct Memory {
    std::uintptr_t first;
    std::uintptr_t end;
};

std::size_t bytesOf(core::DataType type);

bool areApart(const Memory& a, const Memory& b);

// One axis of an array: how many elements there are, and how far apart, in elements.
struct Steps {
    std::uint64_t count;
    std::int64_t stride;
};

// Finds the memory of an array, gaps included. False if no address space has room for it.
bool findMemory(const void* data, std::size_t elementBytes, std::initializer_list<Steps> axes,
                Memory& memory);
bool findMemory(const View<const void>& view, Memory& memory);

// For a view that has memory.
UntypedImage untyped(const View<void>& view);
// Only read through, although its pointer is not const.
UntypedImage untyped(const View<const void>& view);

// Finite and above 0.
bool isSpacing(const core::VoxelSize& spacing);

core::ErrorType checkPolicies(const Options& options);
// A source and how it is read, and the type of the results.
core::ErrorType checkSource(const View<const void>& source, const Options& options,
                            core::DataType result);
// Whether VxImage takes a size.
core::ErrorType checkSize(core::DataType type, const core::ImageSize& size);
core::ErrorType checkExtents(const ResampleRegion& region);
core::ErrorType checkGrid(const Grid& grid, const Slab& slab);
// The number of sub-samples of each voxel along its axes, where `wanted` may leave them open.
// `toSource` leads from the grid into the source, but for the vectors of a field.
core::ErrorType findSubsamples(const Grid& grid, const AffineMap& toSource, const Slab& slab,
                               const Subsamples& wanted, Subsamples& found);
core::ErrorType checkWarp(const Warp& warp);
core::ErrorType checkBox(const core::Rect& box, const Grid& grid);

// Refuses a destination that overlaps a displacement field.
core::ErrorType checkApart(const View<const void>& field, const View<void>& destination);

// Refuses a destination of another size, one that overlaps the source, and one whose voxels
// overlap.
core::ErrorType checkDestination(const View<const void>& source, const View<void>& destination,
                                 const core::ImageSize& size);

}  // namespace volux::resample::detail
