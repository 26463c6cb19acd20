/// @file
/// Whole volumes at once: onto a grid, along planes, to another size, at many positions.
///
/// Every sample has the bits that the module's own kernel gives at the same position, whatever the
/// processor, the number of threads and the way in which the work is cut. The positions are those
/// of AffineMap::operator().
///
/// Results. A destination that holds a buffer must have the size of the result and is written
/// through its strides, so it may wrap memory of the caller's. One that holds none is initialised.
/// Its spacing becomes that of the grid.
///
/// Sources may have any strides, too. Nothing is read beside their rows along x; what lies between
/// the voxels of a row has to be readable.
///
/// Failures are tested in this order, and before any voxel is written:
/// - ERR_NULL_POINTER: a null destination, interpolator, border or array; a source that holds no
///   buffer.
/// - ERR_INVALID_ARGUMENT: a grid extent that is 0 or above 2^31 - 1; a map that is singular or not
///   finite; a spacing that is not finite and above 0; an `outside` that an integer T does not
///   hold.
/// - ERR_INVALID_X, _Y, _Z, _CHANNEL: the destination, or the box of the source, does not fit.
/// - ERR_INVALID_ARGUMENT: source and destination share memory; from the first to the last element
///   of each is compared, gaps included. Or voxels of the destination do: each of its strides has
///   to pass what the smaller ones span.
/// - ERR_ALLOCATION_FAILED: no memory for the result, and the destination is empty again. Later on
///   it stands for a std::bad_alloc of the caller's code or of the threads.
///
/// kCancelled: the progress callback said stop. Each row of the destination along x is then either
/// finished or as it was before; in a new image that is 0.
///
/// A call takes at most 52 KiB of its thread's stack (measured on x86-64), so that 64 KiB are
/// enough for a thread, besides what the caller's own policies and callback take.
///
/// Exceptions are those of the module (a policy without a table), and what the caller's own
/// policies and callback throw; the first one stops the other threads and leaves the call. Each
/// voxel is then either finished or as it was before, also where a std::bad_alloc became
/// ERR_ALLOCATION_FAILED.
#pragma once

#include <cstddef>

#include "volux/core/ErrorType.h"
#include "volux/core/Geometry.h"
#include "volux/core/VxImage.h"
#include "volux/resample/Export.h"
#include "volux/resample/Grid.h"
#include "volux/resample/Options.h"

namespace volux::resample {

/// How the samples of a thick slab become one voxel. They are taken in the order of the planes.
enum class Projection {
    MEAN,     ///< their sum, added one by one from the first on, divided by their number
    MAXIMUM,  ///< the first, replaced by each later one that is greater
    MINIMUM,  ///< the first, replaced by each later one that is less
};

/// Thick slabs: every `planes` successive planes of the grid become one. Output plane k is made of
/// the planes k * planes to k * planes + planes - 1.
struct Slab {
    unsigned int planes = 1;                   ///< at least 1
    Projection projection = Projection::MEAN;  ///< of their samples
};

/// Brings all channels of a volume onto a grid.
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resample(const core::VxImage<T>& source, const Grid& grid,
                                            core::VxImage<T>* destination,
                                            const Options& options = Options());

/// Cuts a plane, or a stack of planes or slabs, out of a volume. `planes.count` counts the result's
/// planes; with a slab, `planes.step` leads from one of its planes to the next.
template <class T>
VOLUX_RESAMPLE_API core::ErrorType reslice(const core::VxImage<T>& source, const Planes& planes,
                                           core::VxImage<T>* destination,
                                           const Options& options = Options(),
                                           const Slab& slab = Slab());

/// Changes the number of voxels: resample() onto gridOfSize().
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resize(const core::VxImage<T>& source, unsigned int width,
                                          unsigned int height, unsigned int depth, Align align,
                                          core::VxImage<T>* destination,
                                          const Options& options = Options());

/// Changes the spacing: resample() onto gridOfSpacing().
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resize(const core::VxImage<T>& source,
                                          const core::VoxelSize& spacing, Align align,
                                          core::VxImage<T>* destination,
                                          const Options& options = Options());

/// A part of the work, for volumes that no memory holds: any box of the output, from any box of the
/// source that contains what it reads. The bits are those of the whole.
struct ResampleRegion {
    unsigned int sourceWidth = 0;   ///< extents of the whole source
    unsigned int sourceHeight = 0;  ///< likewise
    unsigned int sourceDepth = 0;   ///< likewise
    core::Rect output;              ///< the box of the grid that is wanted
    unsigned int brickX = 0;        ///< the voxel of the whole source that the brick begins with
    unsigned int brickY = 0;        ///< likewise
    unsigned int brickZ = 0;        ///< likewise

    /// The box of the source that the output box reads: the brick to cut. Along an axis on which it
    /// reads nothing but what Constant gives, one voxel.
    /// @return ERR_NULL_POINTER, ERR_INVALID_ARGUMENT and ERR_INVALID_X, _Y, _Z (the output box) as
    ///         resample(); ERR_INVALID_ARGUMENT for a policy that is not the module's.
    VOLUX_RESAMPLE_API core::ErrorType support(const Grid& grid, core::Rect* box,
                                               const Options& options = Options()) const;
};

/// Brings a box onto a box of the grid, which becomes the whole destination.
/// @return ERR_INVALID_ARGUMENT also for a policy that is not the module's: it would take the end
///         of the brick for the end of the image. ERR_INVALID_X, _Y, _Z: the output box is empty or
///         outside the grid, or the brick does not hold its support.
template <class T>
VOLUX_RESAMPLE_API core::ErrorType resample(const core::VxImage<T>& brick, const Grid& grid,
                                            const ResampleRegion& region,
                                            core::VxImage<T>* destination,
                                            const Options& options = Options());

/// In what positions are counted.
enum class Units {
    VOXELS,    ///< voxels, centres at whole numbers
    PHYSICAL,  ///< voxels times spacing; divided by it as the module does
};

/// All channels, one after the other at each position.
inline constexpr int kAllChannels = -1;

/// Samples at `count` positions, any double. `results` gets one number for each, or as many as
/// there are channels, and is of type T or double: a double is the reading as it is.
/// @return ERR_INVALID_CHANNEL for a channel that the source lacks; ERR_INVALID_ARGUMENT also for
///         physical units of a source whose spacing is not finite, for results that share memory
///         with the source or the positions, and for more of them than any memory holds. After a
///         cancel each result is either finished or as it was.
template <class T, class Result>
VOLUX_RESAMPLE_API core::ErrorType sample(const core::VxImage<T>& source, const Position* positions,
                                          std::size_t count, Units units, int channel,
                                          Result* results, const Options& options = Options());

}  // namespace volux::resample
