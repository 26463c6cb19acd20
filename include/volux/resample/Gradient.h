/// @file
/// Readings and their derivatives in one pass.
///
/// A derivative is that of the formula by which the kernel reads, at the position itself; no
/// difference of two readings is taken. Each product, sum and quotient is rounded by itself, in
/// doubles, so the bits are the same on every processor and with any number of threads.
///
/// Let v(i, j, k) be the neighbours in the order of their indices, each as the reading takes it: a
/// voxel, the replicated edge or what Constant gives. x(i), y(j), z(k) are their weights along the
/// axes, and x'(i), y'(j), z'(k) the derivatives of the weights. Sums begin with their first term
/// and are added in the order of their index.
///
///     row(j, k)  = sum of v(i, j, k) * x(i) over i
///     row'(j, k) = sum of v(i, j, k) * x'(i) over i
///     sx = sum over k of (sum over j of row'(j, k) * y(j)) * z(k)
///     sy = sum over k of (sum over j of row(j, k) * y'(j)) * z(k)
///     sz = sum over k of (sum over j of row(j, k) * y(j)) * z'(k)
///
/// - NearestNeighbor: the derivatives are 0.0 everywhere.
/// - Linear: the derivatives are sx, sy and sz. The derivatives of the two weights are -1 and 1. At
///   a whole position the reading has a kink: the derivatives are those of the cell that it is read
///   from, which is the one above; below 0, where an index is one lower, it is the one below.
/// - Cubic: the reading r is a quotient by the sum of the weights. Let X, Y, Z be the sums of the
///   weights along the axes, X', Y', Z' those of their derivatives, and W = (X * Y) * Z. Then the
///   derivatives are (sx - r * ((X' * Y) * Z)) / W, (sy - r * ((X * Y') * Z)) / W and
///   (sz - r * ((X * Y) * Z')) / W. They are continuous. The distances d from the position are
///   those of the weights, and the derivatives of the four weights are o(d), n(d), -n(d) and -o(d):
///
///     n(d) = (d * 4.5 - 5) * d
///     o(d) = (d * 5 - 4) - (d * d) * 1.5
///
/// Where Cubic reads no voxel, because its indices wrap, all four numbers are NaN.
#pragma once

#include <cstddef>
#include <type_traits>

#include "volux/core/ErrorType.h"
#include "volux/resample/AffineMap.h"
#include "volux/resample/Export.h"
#include "volux/resample/Options.h"
#include "volux/resample/Resample.h"
#include "volux/resample/View.h"
#include "volux/resample/detail/Operands.h"

namespace volux::resample {

/// A reading and its derivatives by the position.
struct ReadingAndGradient {
    double value;  ///< the reading, with the bits that sample() gives a double
    double x;      ///< how fast it grows along x
    double y;      ///< along y
    double z;      ///< along z
};

namespace detail {

/// What both forms of sampleGradient() come to.
VOLUX_RESAMPLE_API core::ErrorType sampleGradientAt(const View<const void>& source,
                                                    const Frame& frame, const Positions& positions,
                                                    std::size_t count, int channel,
                                                    ReadingAndGradient* results,
                                                    const Options& options);

}  // namespace detail

/// Samples at `count` positions, as sample() does, and takes the derivatives there, neither rounded
/// nor saturated. In Units::VOXELS they are by voxels; in Units::PHYSICAL by physical units: each
/// one by voxels, divided by the spacing along its axis. `results` gets one element for each
/// position, or one for each of its channels.
///
/// Threads, memory and progress are those of sample(); it takes up to twice its time.
/// @return as sample() into doubles; ERR_INVALID_ARGUMENT also for Labels, which has none, and for
///         a policy of the caller's own, whose derivative nobody knows: found before a channel is.
template <class T = detail::Deduced, class Source>
[[nodiscard]] core::ErrorType sampleGradient(const Source& source, const Positions& positions,
                                             std::size_t count, Units units, int channel,
                                             ReadingAndGradient* results,
                                             const Options& options = Options())
{
    detail::requireServed<T, detail::Deduced, Source, View<double>>();
    return detail::sampleGradientAt(detail::readable(source), {units, nullptr}, positions, count,
                                    channel, results, options);
}

/// The same with positions in a space of the caller's, such as the world, and derivatives by its
/// units. With the rows m of `toVoxels` and the derivatives g by voxels, that along axis c is
///
///     (m[0][c] * g.x + m[1][c] * g.y) + m[2][c] * g.z
///
/// @return as sampleGradient() in voxels; ERR_INVALID_ARGUMENT also for a map that is not
///         invertible.
template <class T = detail::Deduced, class Source>
[[nodiscard]] core::ErrorType sampleGradient(const Source& source, const AffineMap& toVoxels,
                                             const Positions& positions, std::size_t count,
                                             int channel, ReadingAndGradient* results,
                                             const Options& options = Options())
{
    detail::requireServed<T, detail::Deduced, Source, View<double>>();
    return detail::sampleGradientAt(detail::readable(source), {Units::VOXELS, &toVoxels}, positions,
                                    count, channel, results, options);
}

}  // namespace volux::resample
