#include "Checks.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "Vectors.h"
#include "exact/ElementTypes.h"
#include "resample/rows/Subsamples.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::resample::detail {

using core::ErrorType;

namespace {

constexpr unsigned int kMostVoxels = 0x7FFFFFFF;  // along an axis

bool isExtent(std::uint64_t extent)
{
    return extent >= 1 && extent <= kMostVoxels;
}

bool isElementType(core::DataType type)
{
    switch (type) {
#define VOLUX_CASE(T) case core::detail::tagOf<T>():
        VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_CASE)
#undef VOLUX_CASE
        return true;
    }
    return false;
}

bool isServed(core::DataType source, core::DataType result)
{
    return isElementType(source) && isElementType(result) &&
           (result == source || result == core::DT_FLOAT || result == core::DT_DOUBLE);
}

std::uint64_t magnitude(std::int64_t stride)
{
    const auto bits = static_cast<std::uint64_t>(stride);
    return stride < 0 ? 0 - bits : bits;
}

// Makes room for the further elements of one axis.
bool extend(Memory& memory, std::size_t elementBytes, const Steps& axis)
{
    std::uintptr_t bytes = 0;
    if (__builtin_mul_overflow(axis.count - 1, magnitude(axis.stride), &bytes) ||
        __builtin_mul_overflow(bytes, elementBytes, &bytes)) {
        return false;
    }
    return axis.stride < 0 ? !__builtin_sub_overflow(memory.first, bytes, &memory.first)
                           : !__builtin_add_overflow(memory.end, bytes, &memory.end);
}

// Whether no two voxels overlap: each stride is at least the span of the smaller ones.
bool hasItsOwnVoxels(const View<void>& view)
{
    std::pair<std::uint64_t, std::uint64_t> axes[] = {{magnitude(view.strideX), view.width},
                                                      {magnitude(view.strideY), view.height},
                                                      {magnitude(view.strideZ), view.depth},
                                                      {magnitude(view.strideC), view.channels}};
    std::sort(std::begin(axes), std::end(axes));
    std::uint64_t span = 1;
    for (const auto& [stride, extent] : axes) {
        if (extent > 1 && stride < span) {
            return false;
        }
        span += stride * (extent - 1);
    }
    return true;
}

// Its type is served.
bool canBeRead(const View<const void>& view)
{
    Memory memory = {};
    return isExtent(view.width) && isExtent(view.height) && isExtent(view.depth) &&
           isExtent(view.channels) && findMemory(view, memory);
}

ErrorType checkFit(const VoxelLayout& destination, const core::ImageSize& size)
{
    if (destination.width != size.width) {
        return core::ERR_INVALID_X;
    }
    if (destination.height != size.height) {
        return core::ERR_INVALID_Y;
    }
    if (destination.depth != size.depth) {
        return core::ERR_INVALID_Z;
    }
    return destination.channels != size.channels ? core::ERR_INVALID_CHANNEL : core::SUCCESS;
}

// As many as one step of the map is long, where none are wanted. False if that is no extent.
bool findSubsamples(const AffineMap& map, int axis, unsigned int wanted, unsigned int& found)
{
    const auto& rows = map.rows;
    const double length = lengthOf({rows[0][axis], rows[1][axis], rows[2][axis]});
    const double open = std::fmax(1.0, std::ceil(length * (1.0 - 0x1p-20)));
    found = wanted > 0 ? wanted : open <= double{kMostVoxels} ? static_cast<unsigned int>(open) : 0;
    return isExtent(found);
}

}  // namespace

std::size_t bytesOf(core::DataType type)
{
    return exact::withElementType(
        type, [](auto element) { return sizeof(typename decltype(element)::Type); });
}

bool areApart(const Memory& a, const Memory& b)
{
    return a.first == a.end || b.first == b.end || a.first >= b.end || b.first >= a.end;
}

bool findMemory(const void* data, std::size_t elementBytes, std::initializer_list<Steps> axes,
                Memory& memory)
{
    const auto first = reinterpret_cast<std::uintptr_t>(data);
    memory = {first, first};
    if (std::any_of(axes.begin(), axes.end(), [](const Steps& axis) { return axis.count == 0; })) {
        return true;
    }
    memory.end += elementBytes;
    const bool isThere = std::all_of(axes.begin(), axes.end(), [&](const Steps& axis) {
        return extend(memory, elementBytes, axis);
    });
    // Offsets are signed.
    return isThere && memory.end - memory.first <= std::uintptr_t{PTRDIFF_MAX};
}

bool findMemory(const View<const void>& view, Memory& memory)
{
    return findMemory(view.data, bytesOf(view.type),
                      {{view.width, view.strideX},
                       {view.height, view.strideY},
                       {view.depth, view.strideZ},
                       {view.channels, view.strideC}},
                      memory);
}

UntypedImage untyped(const View<void>& view)
{
    const auto elementBytes = static_cast<std::int64_t>(bytesOf(view.type));
    // Nothing uses the stride of a single voxel, which may be any number.
    const auto bytes = [&](std::int64_t stride, unsigned int extent) {
        return extent == 1 ? 0 : stride * elementBytes;
    };
    return {view.type,
            elementBytes,
            static_cast<unsigned char*>(view.data),
            view.width,
            view.height,
            view.depth,
            view.channels,
            bytes(view.strideX, view.width),
            bytes(view.strideY, view.height),
            bytes(view.strideZ, view.depth),
            bytes(view.strideC, view.channels)};
}

UntypedImage untyped(const View<const void>& view)
{
    View<void> written(const_cast<void*>(view.data), view);
    written.type = view.type;
    return untyped(written);
}

bool isSpacing(const core::VoxelSize& spacing)
{
    const auto isDistance = [](double d) { return std::isfinite(d) && d > 0.0; };
    return isDistance(spacing.x) && isDistance(spacing.y) && isDistance(spacing.z);
}

ErrorType checkPolicies(const Options& options)
{
    const bool isNull = options.interpolator == nullptr || options.border == nullptr;
    return isNull ? core::ERR_NULL_POINTER : core::SUCCESS;
}

ErrorType checkSource(const View<const void>& source, const Options& options, core::DataType result)
{
    if (source.data == nullptr || checkPolicies(options) != core::SUCCESS) {
        return core::ERR_NULL_POINTER;
    }
    return isServed(source.type, result) && canBeRead(source) ? core::SUCCESS
                                                              : core::ERR_INVALID_ARGUMENT;
}

ErrorType checkSize(core::DataType type, const core::ImageSize& size)
{
    return exact::withElementType(type, [&](auto element) {
        typename decltype(element)::Type single = {};  // wrapped: VxImage alone knows its sizes
        return core::VxImage<decltype(single)>().initializeWithPointer(
            &single, size.width, size.height, size.depth, size.channels);
    });
}

ErrorType checkExtents(const ResampleRegion& region)
{
    const bool sizes = isExtent(region.sourceWidth) && isExtent(region.sourceHeight) &&
                       isExtent(region.sourceDepth);
    return sizes ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

ErrorType checkGrid(const Grid& grid, const Slab& slab)
{
    const bool sizes = isExtent(grid.width) && isExtent(grid.height) &&
                       isExtent(std::uint64_t{grid.depth} * slab.planes);
    return sizes && isSpacing(grid.spacing) && grid.map.isInvertible() ? core::SUCCESS
                                                                       : core::ERR_INVALID_ARGUMENT;
}

ErrorType findSubsamples(const Grid& grid, const AffineMap& toSource, const Slab& slab,
                         const Subsamples& wanted, Subsamples& found)
{
    const bool isFound = findSubsamples(toSource, 0, wanted.x, found.x) &&
                         findSubsamples(toSource, 1, wanted.y, found.y) &&
                         findSubsamples(toSource, 2, wanted.z, found.z) &&
                         isExtent(std::uint64_t{grid.width} * found.x) &&
                         isExtent(std::uint64_t{grid.height} * found.y) &&
                         isExtent(std::uint64_t{grid.depth} * slab.planes * found.z) &&
                         isExtent(std::uint64_t{found.x} * found.y) && isExtent(countOf(found));
    return isFound ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

ErrorType checkWarp(const Warp& warp)
{
    const View<const void>& field = warp.field;
    if (field.data == nullptr) {
        return core::ERR_NULL_POINTER;
    }
    const bool areVectors = (field.type == core::DT_FLOAT || field.type == core::DT_DOUBLE) &&
                            field.channels == 3 && canBeRead(field);
    return areVectors && warp.toField.isInvertible() && warp.toVoxels.isInvertible()
               ? core::SUCCESS
               : core::ERR_INVALID_ARGUMENT;
}

ErrorType checkBox(const core::Rect& box, const Grid& grid)
{
    if (box.xStart > box.xEnd || box.xEnd >= grid.width) {
        return core::ERR_INVALID_X;
    }
    if (box.yStart > box.yEnd || box.yEnd >= grid.height) {
        return core::ERR_INVALID_Y;
    }
    return box.zStart > box.zEnd || box.zEnd >= grid.depth ? core::ERR_INVALID_Z : core::SUCCESS;
}

ErrorType checkApart(const View<const void>& field, const View<void>& destination)
{
    Memory read = {};
    Memory written = {};
    const bool isFree =
        findMemory(field, read) && findMemory(destination, written) && areApart(read, written);
    return isFree ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

ErrorType checkDestination(const View<const void>& source, const View<void>& destination,
                           const core::ImageSize& size)
{
    const ErrorType fits = checkFit(destination, size);
    if (fits != core::SUCCESS) {
        return fits;
    }
    Memory read = {};
    Memory written = {};
    const bool isFree = findMemory(source, read) && findMemory(destination, written) &&
                        areApart(read, written) && hasItsOwnVoxels(destination);
    return isFree ? core::SUCCESS : core::ERR_INVALID_ARGUMENT;
}

}  // namespace volux::resample::detail

#undef VOLUX_FOR_EACH_ELEMENT_TYPE
