/// @file
/// Whole volumes at once: onto a grid, along planes, to another size, at many positions.
///
/// Every sample has the bits that one call of volux_core gives at the same position, on every
/// processor, with any number of threads and however the work is divided. The positions are those
/// of AffineMap::operator(). On a grid the edge of Replication ends, unless it extends: outside the
/// field of view its samples are Options::outside. T is any element type of VxImage; the compiler
/// refuses others.
///
/// Results. A destination with a buffer must have the size of the result. It is written through its
/// strides, so it may wrap memory of the caller's. A destination without a buffer is initialised.
/// Its spacing becomes that of the grid.
///
/// Sources may have any strides. Nothing outside their rows along x is read, but the memory between
/// the voxels of a row must be readable.
///
/// Errors are found in this order, before anything is changed:
/// - ERR_NULL_POINTER: a null destination, interpolator, border or array; a source without a
///   buffer.
/// - ERR_INVALID_ARGUMENT: an extent or a slab that is 0, or a number of planes or of voxels along
///   an axis above 2^31 - 1; a map that is not invertible; a spacing that is not finite and above
///   0; an `outside` that an integer T does not hold.
/// - ERR_INVALID_X, _Y, _Z, _CHANNEL: the destination, or the box of the source, does not fit.
/// - ERR_INVALID_ARGUMENT: source and destination overlap; all memory from the first to the last
///   element of each counts, gaps included. Or destination voxels overlap: each stride must be at
///   least the span of the smaller ones. Or a result that is to be initialised has more bytes than
///   64 bits count.
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
/// and the reads of its kernel, and allocates nothing as large as a volume but the result.
#pragma once

#include <cstddef>
#include <type_traits>

#include "volux/core/ErrorType.h"
#include "volux/core/Geometry.h"
#include "volux/core/VxImage.h"
#include "volux/resample/Export.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Options.h"

namespace volux::resample {

namespace detail {

// Always false. It is in the noexcept clauses of the calls, which are evaluated for the overload
// that a call selects and leave the exported names alone: what would be an unresolved symbol
// becomes a sentence.
template <class T, class Result = T>
constexpr bool served()
{
    static_assert(core::detail::isElementType<T>,
                  "volux::resample serves images of unsigned char, short, unsigned short, int, "
                  "unsigned int, float or double.");
    static_assert(std::is_same_v<Result, T> || std::is_same_v<Result, double>,
                  "volux::resample::sample writes results of the image's element type or double.");
    return false;
}

}  // namespace detail

/// How the samples of a thick slab become one voxel. They are taken in the order of the planes.
enum class Projection {
    MEAN,     ///< their sum, added one by one from the first on, divided by their number
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

/// Brings all channels of a volume onto a grid.
/// @return SUCCESS, kCancelled, or an error in the order above.
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resample(
    const core::VxImage<T>& source, const Grid& grid, core::VxImage<T>* destination,
    const Options& options = Options()) noexcept(detail::served<T>());

/// Cuts a plane, or a stack of planes or slabs, out of a volume. `planes.count` counts the planes
/// of the result; with a slab, `planes.step` leads from one plane inside it to the next.
/// @return as resample().
template <class T>
VOLUX_RESAMPLE_API core::ErrorType reslice(const core::VxImage<T>& source, const Planes& planes,
                                           core::VxImage<T>* destination,
                                           const Options& options = Options(),
                                           const Slab& slab = Slab()) noexcept(detail::served<T>());

/// Changes the number of voxels: resample() onto gridOfSize(), with an edge that extends.
/// @return as resample(); ERR_INVALID_ARGUMENT for a source whose spacing is not finite.
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resize(
    const core::VxImage<T>& source, unsigned int width, unsigned int height, unsigned int depth,
    Align align, core::VxImage<T>* destination,
    const Options& options = Options()) noexcept(detail::served<T>());

/// Changes the spacing, in the physical units of the source's: resample() onto gridOfSpacing(),
/// with an edge that extends.
/// @return as resample(); ERR_INVALID_ARGUMENT for a source whose spacing is not finite.
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resize(
    const core::VxImage<T>& source, const core::VoxelSize& spacing, Align align,
    core::VxImage<T>* destination,
    const Options& options = Options()) noexcept(detail::served<T>());

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
    VOLUX_RESAMPLE_API core::ErrorType support(const Grid& grid, core::Rect* box,
                                               const Options& options = Options()) const;
};

/// Brings a box onto a box of the grid, which becomes the whole destination.
/// @return as resample(); ERR_INVALID_ARGUMENT also for a policy of the caller's own, which would
///         take the end of the brick for the end of the image; ERR_INVALID_X, _Y, _Z also for an
///         output box that is empty or outside the grid, or a brick that lacks what the box reads.
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resample(
    const core::VxImage<T>& brick, const Grid& grid, const ResampleRegion& region,
    core::VxImage<T>* destination,
    const Options& options = Options()) noexcept(detail::served<T>());

/// What positions are counted in.
enum class Units {
    VOXELS,    ///< voxels, with centres at whole numbers
    PHYSICAL,  ///< voxels times spacing; they are divided by the spacing, as volux_core does
};

/// All channels, one after the other at each position.
inline constexpr int kAllChannels = -1;

/// Samples at `count` positions, which may be any doubles; the edge extends. `results` gets one
/// number for each position, or one for each of its channels. They are of type T or double; a
/// double is the reading itself, neither rounded nor saturated. Either array may be null if `count`
/// is 0.
/// @return as resample(); ERR_INVALID_CHANNEL for a channel that the source lacks, and then
///         ERR_INVALID_ARGUMENT for physical units of a source whose spacing is not finite, for
///         results that overlap the source or the positions, and for more of them than memory has
///         addresses. After a cancel each result is either finished or as it was before.
template <class T, class Result>
VOLUX_RESAMPLE_API core::ErrorType sample(
    const core::VxImage<T>& source, const Position* positions, std::size_t count, Units units,
    int channel, Result* results,
    const Options& options = Options()) noexcept(detail::served<T, Result>());

}  // namespace volux::resample
