/// @file
/// Whole volumes at once: onto a grid, along planes, to another size, at many positions.
///
/// Every sample has the bits that one call of volux_core gives at the same position, on every
/// processor, with any number of threads and however the work is divided. The positions are those
/// of AffineMap::operator(). On a grid the edge of Replication ends, unless it extends: outside the
/// field of view its samples are Options::outside.
///
/// Sources are a core::VxImage, an Image or a View, of any element type T of VxImage. They may have
/// any strides. Nothing outside their rows along x is read, but the memory between the voxels of a
/// row must be readable.
///
/// Destinations are the address of a core::VxImage or of an Image, or a View. Their element type is
/// T, float or double. An integer T stores what Options::overflow says; float and double store the
/// reading itself, neither rounded nor saturated, a float the nearest one. Any source goes with any
/// destination. The compiler refuses other types with a sentence; where one is known only while the
/// program runs (View<void>), the call does.
///
/// A destination with a buffer must have the size of the result. It is written through its strides,
/// so it may be memory of the caller's, flipped or permuted. An image without a buffer is
/// initialised. The spacing of an image becomes that of the grid; a view's is not touched.
///
/// The element types may also be named: `resample<short>(source, grid, &result)`,
/// `resample<short, float>(source, grid, &fractions)`.
///
/// Errors are found in this order, before anything is changed (describe() has them in words):
/// - ERR_NULL_POINTER: a null destination, interpolator, border or array; a source or a view
///   without a buffer.
/// - ERR_INVALID_ARGUMENT: an extent or a slab that is 0, or a number of planes, of channels or of
///   voxels along an axis above 2^31 - 1; strides that no memory has room for; a map that is not
///   invertible; a spacing that is not finite and above 0; an `outside` that an integer T does not
///   hold; element types that are not served together; more sub-samples than Subsamples allows.
/// - ERR_INVALID_X, _Y, _Z, _CHANNEL: the destination, or the box of the source, does not fit.
/// - ERR_INVALID_ARGUMENT: source and destination overlap; all memory from the lowest to the
///   highest byte of each counts, gaps included. Or destination voxels overlap: each stride,
///   without its sign, must be at least the span of the smaller ones. Or a result that is to be
///   initialised has more bytes than 64 bits count.
/// - ERR_ALLOCATION_FAILED: there is no memory for the result. The destination is empty and keeps
///   its spacing. Later it stands for a std::bad_alloc anywhere else in the call, also in the
///   caller's code.
///
/// kCancelled: the progress callback asked to stop. Each row of the destination along x is then
/// either finished or as it was before, which is 0 in a new image.
///
/// A call takes at most 52 KiB of its thread's stack (measured on x86-64), so that 64 KiB are
/// enough for a thread, besides what the caller's own policies and callback take.
///
/// Exceptions are those of volux_core (a policy without a table) and of the caller's own policies
/// and callbacks. The first one stops the other threads and leaves the call. Each voxel is then
/// either finished or as it was before, also where a std::bad_alloc became ERR_ALLOCATION_FAILED.
///
/// Threads: any number of calls may run at once, also from one source, while nobody writes what
/// they read and no two write the same memory. Each call takes time in proportion to the samples
/// and the reads of its kernel, and allocates nothing as large as a volume but the result. One
/// exception: policies of the caller's own see a VxImage, so a view that no VxImage describes (a
/// stride below 0 or above 2^32 - 1) is copied first, and one of more bytes than 64 bits count is
/// refused with ERR_INVALID_ARGUMENT.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "volux/core/ErrorType.h"
#include "volux/core/Geometry.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Export.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Options.h"
#include "volux/resample/View.h"
#include "volux/resample/detail/Operands.h"

namespace volux::resample {

/// What a code of volux_core or volux_resample means, as one English sentence; other numbers get
/// one, too. The text lives as long as the library.
VOLUX_RESAMPLE_API const char* describe(core::ErrorType code);

/// How the samples of a thick slab become one voxel. They are taken in the order of the planes.
enum class Projection {
    /// Their sum, added one by one from the first on, divided by their number; the vote of Labels.
    MEAN,
    MAXIMUM,  ///< the first, replaced by each later one that is greater
    MINIMUM,  ///< the first, replaced by each later one that is less
};

/// Thick slabs: every `planes` successive planes become one. Plane p of the result is made of the
/// planes p * planes to p * planes + planes - 1, so it is `planes` times Planes::step from the
/// next.
struct Slab {
    unsigned int planes = 1;                   ///< planes in a slab, at least 1
    Projection projection = Projection::MEAN;  ///< of their samples
};

struct ResampleRegion;
struct Warp;

namespace detail {

/// What a call makes of a source.
struct Wanted {
    Grid grid;
    Slab slab = Slab();
    const ResampleRegion* region = nullptr;  ///< a part of it; null: all of it
    /// Whatever the options say: the first and the last centre may be on the edge of the field of
    /// view, rounding may put one beyond it, and CENTRES makes several voxels of one.
    bool edgeExtends = false;
    const Warp* warp = nullptr;  ///< between the grid and the source, if there is one
};

/// What every call that fills a volume comes to.
VOLUX_RESAMPLE_API core::ErrorType fill(const View<const void>& source, const Wanted& wanted,
                                        const Target& target, const Options& options);

}  // namespace detail

/// Brings all channels of a volume onto a grid.
/// @return SUCCESS, kCancelled, or an error in the order above.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Destination>
[[nodiscard]] core::ErrorType resample(const Source& source, const Grid& grid,
                                       const Destination& destination,
                                       const Options& options = Options())
{
    detail::requireServed<T, R, Source, Destination>();
    return detail::fill(detail::readable(source), {grid}, detail::writable(destination), options);
}

/// Cuts a plane, or a stack of planes or slabs, out of a volume. `planes.count` counts the planes
/// of the result; with a slab, `planes.step` leads from one plane inside it to the next.
/// @return as resample().
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Destination>
[[nodiscard]] core::ErrorType reslice(const Source& source, const Planes& planes,
                                      const Destination& destination,
                                      const Options& options = Options(), const Slab& slab = Slab())
{
    detail::requireServed<T, R, Source, Destination>();
    return detail::fill(detail::readable(source), {gridOfPlanes(planes), slab},
                        detail::writable(destination), options);
}

/// Changes the number of voxels: resample() onto gridOfSize(), with an edge that extends.
/// @return as resample(); ERR_INVALID_ARGUMENT for a source whose spacing is not finite.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Destination>
[[nodiscard]] core::ErrorType resize(const Source& source, unsigned int width, unsigned int height,
                                     unsigned int depth, Align align,
                                     const Destination& destination,
                                     const Options& options = Options())
{
    detail::requireServed<T, R, Source, Destination>();
    const View<const void> view = detail::readable(source);
    return detail::fill(
        view,
        {gridOfSize(detail::sizeOf(view), view.spacing, width, height, depth, align), Slab(),
         nullptr, true},
        detail::writable(destination), options);
}

/// Changes the spacing, in the physical units of the source's: resample() onto gridOfSpacing(),
/// with an edge that extends.
/// @return as resample(); ERR_INVALID_ARGUMENT for a source whose spacing is not finite.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Destination>
[[nodiscard]] core::ErrorType resize(const Source& source, const core::VoxelSize& spacing,
                                     Align align, const Destination& destination,
                                     const Options& options = Options())
{
    detail::requireServed<T, R, Source, Destination>();
    const View<const void> view = detail::readable(source);
    return detail::fill(
        view,
        {gridOfSpacing(detail::sizeOf(view), view.spacing, spacing, align), Slab(), nullptr, true},
        detail::writable(destination), options);
}

/// A part of the work, for volumes that no memory holds: any box of the output, from any box of the
/// source that contains what it reads. The bits are those of the whole.
struct ResampleRegion {
    unsigned int sourceWidth = 0;   ///< voxels of the whole source along x
    unsigned int sourceHeight = 0;  ///< voxels of the whole source along y
    unsigned int sourceDepth = 0;   ///< voxels of the whole source along z
    core::Rect output;              ///< the wanted box, in voxels of the grid
    unsigned int brickX = 0;        ///< the voxel of the whole source that the brick begins with
    unsigned int brickY = 0;        ///< its y
    unsigned int brickZ = 0;        ///< its z

    /// The box of the source that the output box reads: the brick to cut. Along an axis on which it
    /// reads nothing but what Constant gives, one voxel; one in all where every position is outside
    /// the field of view and the edge has ended. O(1); safe from any number of threads.
    /// @return ERR_NULL_POINTER, ERR_INVALID_ARGUMENT and ERR_INVALID_X, _Y, _Z (the output box) as
    ///         resample(); ERR_INVALID_ARGUMENT for a policy of the caller's own.
    [[nodiscard]] VOLUX_RESAMPLE_API core::ErrorType support(
        const Grid& grid, core::Rect* box, const Options& options = Options()) const;

    /// The same under a displacement field: a box that contains what the output box reads, however
    /// the field folds. It is the hull of where the output box lies without the field, moved by
    /// each vector that its samples may read, and by none where they may be outside the field, with
    /// 2^-46 of the numbers that add up to a position for rounding. A vector that is not finite
    /// leads nowhere, but anywhere if the edge does not end. Takes time in proportion to the
    /// vectors that the output box reads; safe from any number of threads.
    /// @return as support() and, for the warp, as resample().
    [[nodiscard]] VOLUX_RESAMPLE_API core::ErrorType support(
        const Grid& grid, const Warp& warp, core::Rect* box,
        const Options& options = Options()) const;
};

/// Brings a box onto a box of the grid, which becomes the whole destination.
/// @return as resample(); ERR_INVALID_ARGUMENT also for a policy of the caller's own, which would
///         take the end of the brick for the end of the image; ERR_INVALID_X, _Y, _Z also for an
///         output box that is empty or outside the grid, or a brick that lacks what the box reads.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Destination>
[[nodiscard]] core::ErrorType resample(const Source& brick, const Grid& grid,
                                       const ResampleRegion& region, const Destination& destination,
                                       const Options& options = Options())
{
    detail::requireServed<T, R, Source, Destination>();
    return detail::fill(detail::readable(brick), {grid, Slab(), &region},
                        detail::writable(destination), options);
}

/// What positions are counted in.
enum class Units {
    VOXELS,    ///< voxels, with centres at whole numbers
    PHYSICAL,  ///< voxels times spacing; they are divided by the spacing, as volux_core does
};

/// All channels, one after the other at each position.
inline constexpr int kAllChannels = -1;

/// Where samples are taken: position n is (x[n * stride], y[n * stride], z[n * stride]).
struct Positions {
    const double* x = nullptr;  ///< of the first position
    const double* y = nullptr;  ///< its y
    const double* z = nullptr;  ///< its z
    std::int64_t stride = 1;    ///< numbers from one position to the next; may be 0 or negative

    /// Three arrays.
    Positions(const double* xs, const double* ys, const double* zs, std::int64_t step = 1)
        : x(xs), y(ys), z(zs), stride(step)
    {
    }
    /// One array of triples.
    Positions(const Position* first)  // NOLINT(google-explicit-constructor): the usual spelling
    {
        if (first != nullptr) {
            *this = Positions(&first->x, &first->y, &first->z, sizeof *first / sizeof first->x);
        }
    }
};

namespace detail {

/// What positions are counted in: units of the source's, or of a map into its voxels.
struct Frame {
    Units units;
    const AffineMap* toVoxels;
};

/// Where the results of sample() go.
struct Results {
    core::DataType type;
    void* data;
};

/// What both forms of sample() come to.
VOLUX_RESAMPLE_API core::ErrorType sampleAt(const View<const void>& source, const Frame& frame,
                                            const Positions& positions, std::size_t count,
                                            int channel, const Results& results,
                                            const Options& options);

}  // namespace detail

/// Samples at `count` positions, which may be any doubles; the edge extends. `results` gets one
/// number for each position, or one for each of its channels. They are of type T, float or double,
/// and a float or double is the reading itself. Any array may be null if `count` is 0.
/// @return as resample(); ERR_INVALID_CHANNEL for a channel that the source lacks, and then
///         ERR_INVALID_ARGUMENT for physical units of a source whose spacing is not finite, for
///         results that overlap the source or the positions, and for more of either than memory has
///         addresses. After a cancel each result is either finished or as it was before.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Result>
[[nodiscard]] core::ErrorType sample(const Source& source, const Positions& positions,
                                     std::size_t count, Units units, int channel, Result* results,
                                     const Options& options = Options())
{
    detail::requireServed<T, R, Source, View<Result>>();
    return detail::sampleAt(detail::readable(source), {units, nullptr}, positions, count, channel,
                            {View<Result>::type, results}, options);
}

/// The same with positions in a space of the caller's, such as the world, which `toVoxels` maps to
/// voxels of the source by the arithmetic of AffineMap::operator().
/// @return as sample() in voxels; ERR_INVALID_ARGUMENT also for a map that is not invertible.
template <class T = detail::Deduced, class R = detail::Deduced, class Source, class Result>
[[nodiscard]] core::ErrorType sample(const Source& source, const AffineMap& toVoxels,
                                     const Positions& positions, std::size_t count, int channel,
                                     Result* results, const Options& options = Options())
{
    detail::requireServed<T, R, Source, View<Result>>();
    return detail::sampleAt(detail::readable(source), {Units::VOXELS, &toVoxels}, positions, count,
                            channel, {View<Result>::type, results}, options);
}

}  // namespace volux::resample
