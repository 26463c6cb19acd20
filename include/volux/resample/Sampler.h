/// @file
/// Single readings: a sampler that is made once and then called at one position after another.
#pragma once

#include <cstdint>
#include <memory>

#include "volux/core/ErrorType.h"
#include "volux/resample/Export.h"
#include "volux/resample/Options.h"
#include "volux/resample/View.h"
#include "volux/resample/detail/Operands.h"

namespace volux::resample {

namespace detail {

/// One channel of a source and how it is read, as the functions that read it need to know.
struct SampledChannel {
    using Read = double (*)(const SampledChannel& channel, double x, double y, double z);

    Read read = nullptr;           ///< chosen by type, kernel, layout and instruction set
    const void* data = nullptr;    ///< of voxel (0, 0, 0)
    std::int64_t strides[3] = {};  ///< bytes from a voxel to the next along x, y and z
    std::int64_t back = 0;         ///< bytes from the first neighbour to the one at the position
    /// Positions from `begin` to before `end` have all their neighbours inside: x, y, z, z.
    double begin[4] = {};
    double end[4] = {};            ///< likewise
    std::int64_t extents[3] = {};  ///< voxels along x, y and z
    bool isConstant = false;       ///< whether Constant reads outside, and not Replication
    double outside = 0.0;          ///< what Constant reads
    const void* own = nullptr;     ///< what reads by policies of the caller's own
};

/// A channel to read, and what holds the readers of policies of the caller's own, if there are any.
struct SamplerParts {
    SampledChannel channel;
    std::shared_ptr<const void> own;
    core::ErrorType error;
};

/// Makes the parts of a sampler, or one that reads NaN.
VOLUX_RESAMPLE_API SamplerParts makeSampler(const View<const void>& source, int channel,
                                            const Options& options);

}  // namespace detail

/// Reads one channel of a source at one position after another, by the bits of volux_core's call:
///
///     Sampler(view, Options(kernel, border, value), c)(x, y, z)
///     image.getDoubleValueReal(x, y, z, c, kernel, border, value)  // of an image of spacing 1
///
/// for every double, NaN, infinities and positions far from the image included. Positions are in
/// voxels, with voxel centres at whole numbers, and the edge extends, as in every single call: of
/// the options the interpolator, the border and `outside` count, and no others.
///
/// What a call of volux_core finds out each time, a sampler finds out when it is made: the strides,
/// the order of the voxels in memory, the border and what the processor offers.
///
/// A sampler is a value of fixed size. It refers to the voxels, which must outlive it and all its
/// copies; the view or the image that it was made of need not, as long as the voxels stay where
/// they are. Labels and policies of the caller's own are called through volux_core at every
/// reading; the caller's must outlive it, too. For them alone a sampler allocates memory when it is
/// made, and copies share it: a view that no VxImage describes (a stride below 0 or above 2^32 - 1)
/// is copied then, and what is written to its voxels later is not read.
///
/// Threads: any number of threads may call one sampler at once, while nobody writes the voxels.
/// Calls are O(1), lock nothing and allocate nothing.
class Sampler {
public:
    /// Reads a VxImage, an Image or a View. It allocates nothing for the kernels of volux_core, and
    /// throws nothing. What it cannot read, error() tells, and every call gives NaN.
    template <class Source>
    explicit Sampler(const Source& source, const Options& options = Options(), int channel = 0)
    {
        static_assert(detail::isReadable<Source>,
                      "volux::resample reads a VxImage, an Image or a View.");
        if constexpr (detail::isReadable<Source>) {
            parts_ = detail::makeSampler(detail::readable(source), channel, options);
        }
    }

    /// SUCCESS, or the first of these: ERR_NULL_POINTER for a source without a buffer or a null
    /// policy; ERR_INVALID_ARGUMENT for an extent that is 0 or above 2^31 - 1, strides that no
    /// memory has room for, an element type that is none, or an `outside` that an integer T does
    /// not hold; ERR_INVALID_CHANNEL. With Labels or a policy of the caller's own also
    /// ERR_INVALID_ARGUMENT for more bytes than 64 bits count, and ERR_ALLOCATION_FAILED.
    [[nodiscard]] core::ErrorType error() const { return parts_.error; }

    /// The reading at a position, in voxels; neither rounded nor saturated.
    double operator()(double x, double y, double z) const
    {
        return parts_.channel.read(parts_.channel, x, y, z);
    }

private:
    detail::SamplerParts parts_;
};

}  // namespace volux::resample
