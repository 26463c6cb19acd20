#include "volux/resample/Resample.h"

#include <cstdint>
#include <new>

#include "CallersPolicies.h"
#include "Checks.h"
#include "Policies.h"
#include "Support.h"
#include "Warps.h"
#include "exact/ElementTypes.h"
#include "resample/rows/Rows.h"
#include "resample/rows/Subsamples.h"

namespace volux::resample {

using core::ErrorType;
using core::SUCCESS;
using core::VxImage;

namespace detail {

namespace {

// Gives a destination a buffer. One that is refused is as it was; without memory it is empty and
// keeps its spacing.
template <class R>
ErrorType allocate(VxImage<R>& destination, const core::ImageSize& size)
{
    const ErrorType refusal = checkSize(View<R>::type, size);
    if (refusal != SUCCESS) {
        return refusal;
    }
    const core::VoxelSize spacing = destination.getVoxelSize();
    destination.terminate();  // a failed allocation leaves a capacity that is not there
    const ErrorType result =
        destination.initialize(size.width, size.height, size.depth, size.channels);
    if (result != SUCCESS) {
        destination.terminate();
        destination.setVoxelSize(spacing);
    }
    return result;
}

// Whether the brick is inside the source and holds what is read.
ErrorType checkBrick(const VoxelLayout& brick, const Task& task)
{
    const ResampleRegion& region = task.source.region;
    const core::Rect need = supportOf(reachOf(task.map, finerBox(task.output, task.subsamples),
                                              task.displacement, task.source.reading),
                                      region, task.source.reading);
    const auto holds = [](unsigned int first, std::uint64_t extent, unsigned int whole,
                          unsigned int needFirst, unsigned int needLast) {
        return first + extent <= whole && first <= needFirst && needLast < first + extent;
    };
    if (!holds(region.brickX, brick.width, region.sourceWidth, need.xStart, need.xEnd)) {
        return core::ERR_INVALID_X;
    }
    if (!holds(region.brickY, brick.height, region.sourceHeight, need.yStart, need.yEnd)) {
        return core::ERR_INVALID_Y;
    }
    return holds(region.brickZ, brick.depth, region.sourceDepth, need.zStart, need.zEnd)
               ? SUCCESS
               : core::ERR_INVALID_Z;
}

struct Request {
    const View<const void>& source;
    const Grid& grid;
    const Slab& slab;
    ResampleRegion region;
    bool isWhole;      // the source is all of it
    bool edgeExtends;  // whatever the options say
    const Warp* warp;  // or null
};

ErrorType checkDestination(const Request& request, const View<void>& destination,
                           const core::ImageSize& size)
{
    const ErrorType result = checkDestination(request.source, destination, size);
    return result == SUCCESS && request.warp != nullptr
               ? checkApart(request.warp->field, destination)
               : result;
}

// Tests a destination that holds a buffer, and gives one to any other.
ErrorType prepare(const Request& request, const Target& target, View<void>& destination)
{
    const core::Rect& box = request.region.output;
    const core::ImageSize size(box.width(), box.height(), box.depth(), request.source.channels);
    if (target.image == nullptr) {
        destination = target.view;
        return checkDestination(request, destination, size);
    }
    return exact::withElementType(target.view.type, [&](auto element) {
        using R = typename decltype(element)::Type;
        auto& image = *static_cast<VxImage<R>*>(target.image);
        const ErrorType result = image.getBufferPointer() == nullptr
                                     ? allocate(image, size)
                                     : checkDestination(request, viewOf(image), size);
        if (result == SUCCESS) {
            image.setVoxelSize(request.grid.spacing);
            destination = viewOf(image);
        }
        return result;
    });
}

// From a grid into the source, but for the vectors of a field.
AffineMap toSource(const Grid& grid, const Warp* warp)
{
    return warp == nullptr ? grid.map : composed(warp->toVoxels, grid.map);
}

// The finer grid of the sub-samples. Those of a slab of labels vote all at once, as no mean may be
// taken of them.
void divide(const Request& request, Task& task)
{
    task.map = finerMap(request.grid.map, task.subsamples);
    task.centres = request.grid.map;
    unsigned int& planes = task.slab.planes;
    const bool isVote = task.source.reading.isLabels && task.slab.projection == Projection::MEAN;
    if (isVote && planes > 1) {
        for (auto& row : task.centres.rows) {
            row[3] += row[2] * ((planes - 1.0) * 0.5);
            row[2] *= planes;
        }
        task.subsamples.z *= planes;
        planes = 1;
    }
}

ErrorType check(const Request& request, const Target& target, const Options& options, Task& task)
{
    const View<const void>& source = request.source;
    Reading& reading = task.source.reading;
    const bool isNowhere = (target.image == nullptr && target.view.data == nullptr) ||
                           (request.warp != nullptr && request.warp->field.data == nullptr);
    ErrorType result = isNowhere ? core::ERR_NULL_POINTER : SUCCESS;
    const auto next = [&](auto test) { result = result == SUCCESS ? test() : result; };
    next([&] { return checkSource(source, options, target.view.type); });
    next([&] { return readingOf(source.type, options, reading); });
    reading.edgeEnds = reading.edgeEnds && !request.edgeExtends;
    next([&] { return checkGrid(request.grid, request.slab); });
    if (request.warp != nullptr) {
        next([&] { return displacementOf(*request.warp, task.displacement); });
    }
    next([&] {
        return findSubsamples(request.grid, toSource(request.grid, request.warp), request.slab,
                              options.subsamples, task.subsamples);
    });
    next([&] {
        divide(request, task);
        return SUCCESS;
    });
    next([&] { return checkExtents(request.region); });
    next([&] { return reading.isOwn ? checkSize(source.type, sizeOf(source)) : SUCCESS; });
    if (!request.isWhole) {
        next([&] { return reading.isOwn ? core::ERR_INVALID_ARGUMENT : SUCCESS; });
        next([&] { return checkBox(request.region.output, request.grid); });
        next([&] { return checkBrick(source, task); });
    }
    return result;
}

ErrorType perform(const Request& request, const Target& target, const Options& options)
{
    Task task = {{{}, request.region, {}, {}}, {}, {}, request.slab, request.region.output, {}, {}};
    View<void> destination;
    ErrorType result = check(request, target, options, task);
    if (result == SUCCESS) {
        result = prepare(request, target, destination);
    }
    if (result != SUCCESS) {
        return result;
    }
    task.source.image = untyped(request.source);
    task.destination = untyped(destination);
    try {
        if (task.source.reading.isOwn) {
            Source& source = task.source;
            result = sampleByImage(request.source, options, source.own, &source.ownNearest);
        }
        return result != SUCCESS ? result : fillRows(task, options) ? SUCCESS : kCancelled;
    } catch (const std::bad_alloc&) {  // from a call's tables, its threads or the caller's code
        return core::ERR_ALLOCATION_FAILED;
    }
}

ResampleRegion wholeGrid(const VoxelLayout& source, const Grid& grid)
{
    ResampleRegion region = wholeOf(source);
    region.output = core::Rect(0, grid.width - 1, 0, grid.height - 1, 0, grid.depth - 1);
    return region;
}

}  // namespace

ErrorType fill(const View<const void>& source, const Wanted& wanted, const Target& target,
               const Options& options)
{
    const bool isWhole = wanted.region == nullptr;
    return perform({source, wanted.grid, wanted.slab,
                    isWhole ? wholeGrid(source, wanted.grid) : *wanted.region, isWhole,
                    wanted.edgeExtends, wanted.warp},
                   target, options);
}

}  // namespace detail

namespace detail {

namespace {

// `warp` may be null.
ErrorType findSupport(const ResampleRegion& region, const Grid& grid, const Warp* warp,
                      const Options& options, core::Rect* box)
{
    Reading reading;
    std::optional<Displacement> displacement;
    const bool isNull = box == nullptr || (warp != nullptr && warp->field.data == nullptr);
    ErrorType result = isNull ? core::ERR_NULL_POINTER : SUCCESS;
    const auto next = [&](auto test) { result = result == SUCCESS ? test() : result; };
    next([&] { return checkPolicies(options); });
    next([&] { return readingOf(core::DT_DOUBLE, options, reading); });
    next([&] { return checkGrid(grid, Slab()); });
    if (warp != nullptr) {
        next([&] { return displacementOf(*warp, displacement); });
    }
    Subsamples n;
    next([&] { return findSubsamples(grid, toSource(grid, warp), Slab(), options.subsamples, n); });
    next([&] { return checkExtents(region); });
    next([&] { return reading.isOwn ? core::ERR_INVALID_ARGUMENT : SUCCESS; });
    next([&] { return checkBox(region.output, grid); });
    if (result == SUCCESS) {
        *box = supportOf(
            reachOf(finerMap(grid.map, n), finerBox(region.output, n), displacement, reading),
            region, reading);
    }
    return result;
}

}  // namespace

}  // namespace detail

ErrorType ResampleRegion::support(const Grid& grid, core::Rect* box, const Options& options) const
{
    return detail::findSupport(*this, grid, nullptr, options, box);
}

ErrorType ResampleRegion::support(const Grid& grid, const Warp& warp, core::Rect* box,
                                  const Options& options) const
{
    return detail::findSupport(*this, grid, &warp, options, box);
}

}  // namespace volux::resample
