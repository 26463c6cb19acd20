#include "volux/resample/Resample.h"

#include <cstdint>
#include <new>

#include "CallersPolicies.h"
#include "Checks.h"
#include "Policies.h"
#include "Support.h"
#include "resample/rows/Rows.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::resample {

using core::ErrorType;
using core::SUCCESS;
using core::VxImage;

namespace detail {

namespace {

// The getter is not const, but only reads.
template <class T>
core::ImageSize sizeOf(const VxImage<T>& image)
{
    return const_cast<VxImage<T>&>(image).getImageSize();
}

template <class T>
ErrorType checkFit(const VxImage<T>& destination, const core::ImageSize& size)
{
    if (destination.getWidth() != size.width) {
        return core::ERR_INVALID_X;
    }
    if (destination.getHeight() != size.height) {
        return core::ERR_INVALID_Y;
    }
    if (destination.getDepth() != size.depth) {
        return core::ERR_INVALID_Z;
    }
    return destination.getChannels() != size.channels ? core::ERR_INVALID_CHANNEL : SUCCESS;
}

// Gives a destination a buffer. One that is refused is as it was; without memory it is empty and
// keeps its spacing.
template <class T>
ErrorType allocate(VxImage<T>& destination, const core::ImageSize& size)
{
    T element = {};  // wrapped, not allocated: VxImage alone knows which sizes there are
    const ErrorType refusal = VxImage<T>().initializeWithPointer(&element, size.width, size.height,
                                                                 size.depth, size.channels);
    if (refusal != SUCCESS) {
        return refusal;
    }
    const core::VoxelSize spacing = spacingOf(destination);
    destination.terminate();  // a failed allocation leaves a capacity that is not there
    const ErrorType result =
        destination.initialize(size.width, size.height, size.depth, size.channels);
    if (result != SUCCESS) {
        destination.terminate();
        destination.setVoxelSize(spacing);
    }
    return result;
}

// Tests a destination that holds a buffer, and gives one to any other.
template <class T>
ErrorType prepare(VxImage<T>& destination, const core::ImageSize& size, const UntypedImage& source)
{
    if (destination.getBufferPointer() == nullptr) {
        return allocate(destination, size);
    }
    const ErrorType fits = checkFit(destination, size);
    return fits == SUCCESS ? checkOverlap(source, untyped(destination)) : fits;
}

// Whether the brick is inside the source and holds what is read.
ErrorType checkBrick(const Task& task)
{
    const ResampleRegion& region = task.source.region;
    const UntypedImage& brick = task.source.image;
    const core::Rect need = supportOf(task.map, task.output, region, task.source.reading);
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

template <class T>
struct Request {
    const VxImage<T>& source;
    const Grid& grid;
    ResampleRegion region;
    Slab slab;
    bool isWhole;              // the source is all of it
    bool edgeExtends = false;  // whatever the options say
};

template <class T>
ErrorType check(const Request<T>& request, const VxImage<T>* destination, const Options& options,
                Task& task)
{
    ErrorType result = destination == nullptr ? core::ERR_NULL_POINTER : SUCCESS;
    const auto next = [&](auto test) { result = result == SUCCESS ? test() : result; };
    next([&] { return checkSource(task.source.image); });
    next([&] { return readingOf<T>(options, task.source.reading); });
    task.source.reading.edgeEnds = task.source.reading.edgeEnds && !request.edgeExtends;
    next([&] { return checkGrid(request.grid, request.slab); });
    next([&] { return checkExtents(request.region); });
    if (!request.isWhole) {
        const bool isOwn = task.source.reading.isOwn;
        next([&] { return isOwn ? core::ERR_INVALID_ARGUMENT : SUCCESS; });
        next([&] { return checkBox(request.region.output, request.grid); });
        next([&] { return checkBrick(task); });
    }
    return result;
}

template <class T>
ErrorType perform(const Request<T>& request, VxImage<T>* destination, const Options& options)
{
    Task task = {{untyped(request.source), request.region, {}, {}},
                 request.grid.map,
                 request.slab,
                 request.region.output,
                 {}};
    const core::Rect& box = request.region.output;
    ErrorType result = check(request, destination, options, task);
    if (result == SUCCESS) {
        result = prepare(*destination,
                         {box.width(), box.height(), box.depth(), request.source.getChannels()},
                         task.source.image);
    }
    if (result != SUCCESS) {
        return result;
    }
    destination->setVoxelSize(request.grid.spacing);
    task.destination = untyped(*destination);
    const CallersPolicies<T> own(request.source, options);
    task.source.own = own.sample();
    try {
        return fillRows(task, options) ? SUCCESS : kCancelled;
    } catch (const std::bad_alloc&) {  // from a call's tables, its threads or the caller's code
        return core::ERR_ALLOCATION_FAILED;
    }
}

template <class T>
Request<T> wholeOf(const VxImage<T>& source, const Grid& grid, const Slab& slab,
                   bool edgeExtends = false)
{
    ResampleRegion region;
    region.sourceWidth = source.getWidth();
    region.sourceHeight = source.getHeight();
    region.sourceDepth = source.getDepth();
    region.output = core::Rect(0, grid.width - 1, 0, grid.height - 1, 0, grid.depth - 1);
    return {source, grid, region, slab, true, edgeExtends};
}

// The edge extends: the centre of the last voxel may be on the edge of the field of view, rounding
// may put one beyond it, and CENTRES makes several voxels of one.
template <class T>
ErrorType resizeOnto(const Grid& grid, const VxImage<T>& source, VxImage<T>* destination,
                     const Options& options)
{
    return perform(wholeOf(source, grid, Slab(), true), destination, options);
}

}  // namespace

}  // namespace detail

template <class T>
ErrorType resample(const VxImage<T>& source, const Grid& grid, VxImage<T>* destination,
                   const Options& options) noexcept(detail::served<T>())
{
    return detail::perform(detail::wholeOf(source, grid, Slab()), destination, options);
}

template <class T>
ErrorType reslice(const VxImage<T>& source, const Planes& planes, VxImage<T>* destination,
                  const Options& options, const Slab& slab) noexcept(detail::served<T>())
{
    return detail::perform(detail::wholeOf(source, gridOfPlanes(planes), slab), destination,
                           options);
}

template <class T>
ErrorType resize(const VxImage<T>& source, unsigned int width, unsigned int height,
                 unsigned int depth, Align align, VxImage<T>* destination,
                 const Options& options) noexcept(detail::served<T>())
{
    return detail::resizeOnto(
        gridOfSize(detail::sizeOf(source), detail::spacingOf(source), width, height, depth, align),
        source, destination, options);
}

template <class T>
ErrorType resize(const VxImage<T>& source, const core::VoxelSize& spacing, Align align,
                 VxImage<T>* destination, const Options& options) noexcept(detail::served<T>())
{
    return detail::resizeOnto(
        gridOfSpacing(detail::sizeOf(source), detail::spacingOf(source), spacing, align), source,
        destination, options);
}

template <class T>
ErrorType resample(const VxImage<T>& brick, const Grid& grid, const ResampleRegion& region,
                   VxImage<T>* destination, const Options& options) noexcept(detail::served<T>())
{
    return detail::perform<T>({brick, grid, region, Slab(), false}, destination, options);
}

ErrorType ResampleRegion::support(const Grid& grid, core::Rect* box, const Options& options) const
{
    detail::Reading reading;
    ErrorType result = box == nullptr ? core::ERR_NULL_POINTER : SUCCESS;
    const auto next = [&](auto test) { result = result == SUCCESS ? test() : result; };
    next([&] { return detail::readingOf<double>(options, reading); });
    next([&] { return detail::checkGrid(grid, Slab()); });
    next([&] { return detail::checkExtents(*this); });
    next([&] { return reading.isOwn ? core::ERR_INVALID_ARGUMENT : SUCCESS; });
    next([&] { return detail::checkBox(output, grid); });
    if (result == SUCCESS) {
        *box = detail::supportOf(grid.map, output, *this, reading);
    }
    return result;
}

#define VOLUX_RESAMPLE(T)                                                                        \
    template ErrorType resample<T>(const VxImage<T>&, const Grid&, VxImage<T>*, const Options&); \
    template ErrorType resample<T>(const VxImage<T>&, const Grid&, const ResampleRegion&,        \
                                   VxImage<T>*, const Options&);                                 \
    template ErrorType reslice<T>(const VxImage<T>&, const Planes&, VxImage<T>*, const Options&, \
                                  const Slab&);                                                  \
    template ErrorType resize<T>(const VxImage<T>&, unsigned int, unsigned int, unsigned int,    \
                                 Align, VxImage<T>*, const Options&);                            \
    template ErrorType resize<T>(const VxImage<T>&, const core::VoxelSize&, Align, VxImage<T>*,  \
                                 const Options&);
VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_RESAMPLE)
#undef VOLUX_RESAMPLE

}  // namespace volux::resample

#undef VOLUX_FOR_EACH_ELEMENT_TYPE
