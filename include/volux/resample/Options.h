/// @file
/// What every operation of volux_resample takes besides its input and its output.
///
/// Options are plain values: making one refuses nothing, and the operations check what they are
/// given. Any number of threads may read one while nobody writes it.
#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>

#include "volux/core/ErrorType.h"
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/InterpolationType.h"
#include "volux/resample/Labels.h"
#include "volux/resample/Subsamples.h"

namespace volux::resample {

/// The result of an operation whose progress callback asked to stop: neither success nor a failure.
inline constexpr core::ErrorType kCancelled = static_cast<core::ErrorType>(1);

/// What an integer destination stores for a reading that its element type does not hold. Readings
/// are rounded half away from zero first.
enum class Overflow {
    SATURATE,  ///< the nearest value that the type holds; NaN gives 0
    WRAP,      ///< what the rounded readings of volux_core give
};

/// Receives the fraction of the work that is done, from 0 to 1, after each part of it. Returning
/// false before 1 cancels: parts that have begun are finished, and the operation gives kCancelled.
///
/// The threads that work call it, one at a time in each operation, and the fraction never falls.
/// What it throws ends the operation and leaves the call.
using Progress = std::function<bool(double)>;

/// Runs work on threads of the host's own: calls `part(n)` once for each n below `parts`, in any
/// order, on any threads, several at once or not, and returns when all these calls have returned.
/// `part` is gone then. It throws nothing. The executor synchronises: `part` must see what happened
/// before the executor was called, and the caller what `part` did.
///
/// A call of `part` does what is next of the work, in its order, whatever n is; further calls do
/// nothing. Were there fewer than `parts`, as when the host's own tasks have been cancelled, the
/// operation gives kCancelled. What an executor throws, once no call of `part` runs any more,
/// leaves the operation; a std::bad_alloc becomes ERR_ALLOCATION_FAILED.
///
/// A thread of an executor never waits for another one's call of the progress callback, which tells
/// of the parts that end meanwhile in its next call. So the callback may use the executor, too.
using Executor =
    std::function<void(std::size_t parts, const std::function<void(std::size_t)>& part)>;

namespace detail {

template <class I>
core::Interpolator* interpolatorOf(I interpolator)
{
    constexpr bool isKernel = std::is_same_v<I, core::NearestNeighbor> ||
                              std::is_same_v<I, core::Linear> || std::is_same_v<I, core::Cubic> ||
                              std::is_same_v<I, Labels>;
    static_assert(isKernel || std::is_convertible_v<I, core::Interpolator*>,
                  "volux::resample takes NearestNeighbor, Linear, Cubic and Labels by value, and "
                  "any interpolator by its address.");
    namespace Types = core::InterpolationType;
    if constexpr (std::is_same_v<I, core::NearestNeighbor>) {
        return &Types::NEAREST_NEIGHBOR;
    } else if constexpr (std::is_same_v<I, core::Linear>) {
        return &Types::LINEAR;
    } else if constexpr (std::is_same_v<I, core::Cubic>) {
        return &Types::CUBIC;
    } else if constexpr (std::is_same_v<I, Labels>) {
        return &LABELS;
    } else {
        return interpolator;
    }
}

template <class B>
core::Border* borderOf(B border)
{
    static_assert(std::is_same_v<B, core::Constant> || std::is_same_v<B, core::Replication> ||
                      std::is_convertible_v<B, core::Border*>,
                  "volux::resample takes Constant and Replication by value, and any border by its "
                  "address.");
    namespace Types = core::InterpolationBorderType;
    if constexpr (std::is_same_v<B, core::Constant>) {
        return &Types::CONSTANT;
    } else if constexpr (std::is_same_v<B, core::Replication>) {
        return &Types::REPLICATION;
    } else {
        return border;
    }
}

}  // namespace detail

/// How samples are taken, stored and divided among threads. Policies are passed as in volux_core:
/// `Cubic()`, `Options(Linear(), Constant(), -1000)`, `Options(&mine, &border)`. One that is passed
/// by its address must live as long as the call, and several threads use it at once.
///
/// Two defaults differ from those of volux_core. Beyond the outer centres the edge continues, where
/// volux_core reads 0, because half a voxel of every enlarged volume is there. Integers saturate,
/// where volux_core wraps, because nobody checks every overshoot of a volume. A float or double
/// destination always keeps the fraction.
///
/// The edge of Replication ends with the field of view. A voxel reaches half a voxel beyond its
/// centre, and there its copies are right; farther out they are a picture of nothing, smeared to
/// the end of a grid larger than the source. So a sample that resample() or reslice() take with
/// Replication at a position p, from a source of n voxels, of which a brick may be a part, is
///
///     -0.5 <= p < n - 0.5 on every axis    the bits of volux_core's call with Replication
///     anywhere else                        `outside`
///
/// before a slab is projected. `edgeExtends` gives volux_core's bits everywhere. sample() and
/// resize() always do: sample() repeats single calls, and resize() keeps the field of view, but for
/// a last centre on its edge, or beyond it by rounding (see gridOfSize() and gridOfSpacing()).
/// Constant and policies of the caller's own give their own values at all positions.
struct Options {
    core::Interpolator* interpolator = &core::InterpolationType::LINEAR;  ///< the kernel
    core::Border* border = &core::InterpolationBorderType::REPLICATION;   ///< outside the image
    /// What Constant reads, and Replication out of view; an integer T must hold it.
    double outside = 0.0;
    /// Whether Replication goes on however far from the image.
    bool edgeExtends = false;
    Overflow overflow = Overflow::SATURATE;  ///< for integer destinations
    Subsamples subsamples;  ///< antialiasing; kAntialiased: as much as the grid's steps call for
    /// How many threads may work, the caller's among them; 0: one for each processor that its
    /// affinity and the quotas of its control groups allow. Fewer work where the system refuses one
    /// or there is not some 0.2 ms of work for each.
    unsigned int threads = 0;
    Progress progress;  ///< may be empty
    /// Runs what is worth several threads, on as many as it likes, unless `threads` is 1. Empty:
    /// the caller's thread and others that end before the call returns.
    Executor executor;

    /// Linear, Replication, on all threads.
    Options() = default;
    /// With another kernel.
    template <class I, class = std::enable_if_t<!std::is_base_of_v<Options, I>>>
    Options(I kernel)  // NOLINT(google-explicit-constructor): a kernel alone is an option
        : interpolator(detail::interpolatorOf(kernel))
    {
    }
    /// With another kernel and border; `value` is what is read outside.
    template <class I, class B>
    Options(I kernel, B outsidePolicy, double value = 0.0)
        : interpolator(detail::interpolatorOf(kernel)),
          border(detail::borderOf(outsidePolicy)),
          outside(value)
    {
    }
};

}  // namespace volux::resample
