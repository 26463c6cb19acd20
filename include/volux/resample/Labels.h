/// @file
/// Labels: an interpolator for segmentations and other maps whose values are names, not amounts.
///
/// Linear makes new numbers at every boundary: between the labels 2 and 8 it reads a 5, which is
/// another organ. NearestNeighbor makes none, but moves boundaries by up to half a voxel. Labels
/// reads the label that Linear would weigh most.
#pragma once

#include "volux/core/InterpolationType.h"
#include "volux/core/VxImage.h"
#include "volux/resample/Export.h"

namespace volux::resample {

/// Reads that label among the eight voxels around a position whose voxels weigh most.
///
/// The neighbours, their order (x fastest) and their weights (x-weight * y-weight) * z-weight are
/// those of Linear; neighbours outside are what the border reads there. With L(n) and w(n) of
/// neighbours n = 0 to 7,
///
///     score(n) = the sum of w(m) over all m with L(m) = L(n), one by one from the first m on
///
/// The label of the greatest score is the result. Where several labels share it, the result is that
/// of the nearest voxel, which NearestNeighbor reads, if it is one of them, and else the lowest. So
/// a reading is a voxel of the image or what the border gives, and never another value.
///
/// In a float or double image, 0.0 and -0.0 are one label, read with the sign that the first such
/// neighbour has. All NaN are one label, too, which counts as higher than every number. A sum that
/// is NaN, as it may be at positions that are not finite or far from any image, counts as
/// -infinity.
///
/// The idea, one linear interpolation for each label and the greatest of them, is that of
/// J. Schaerer, F. Roche and B. Belaroussi, "A generic interpolator for multi-label images", The
/// Insight Journal, 2014. Here neither memory nor time grows with the number of labels.
///
/// Sub-samples of a voxel (Subsamples) have no mean here: they vote. The label of most of them is
/// the result; where several have most votes, it is that of the nearest voxel to the centre of the
/// result's voxel, as NearestNeighbor reads it there with the same options, if it is one of them,
/// and else the lowest. Zeros and NaN count as above, the first sub-sample being the first.
/// resize() with Align::EDGES to extents that divide the source's, with kAntialiased, so gives the
/// mode of each block. A Slab of Projection::MEAN is a vote, too, of the sub-samples of all its
/// planes at once, whose centre is that of the slab: o + Z * ((planes - 1) / 2) is added up in this
/// order for the origin of the centres, whose step from slab to slab is Z * planes.
///
/// It is called by itself, by its address in the calls of volux_core, and by value or by its
/// address in Options; the results have the same bits. A call allocates nothing and is thread-safe
/// while nobody modifies the image. It throws only what a border of the caller's own throws.
struct VOLUX_RESAMPLE_API Labels : core::Interpolator {
    /// @{
    /// Has no state to set, copy or free. Never throws; thread-safe.
    Labels() = default;
    constexpr explicit Labels(core::detail::ConstantInitialized tag) noexcept : Interpolator(tag) {}
    /// @}

    /// Samples channel c at (x, y, z), in voxels, with 8 reads. Constant reads `value` outside.
    template <class T, class B>
    T operator()(
        const core::VxImage<T>& image, double x, double y, double z, unsigned int c, B border,
        T value) noexcept(core::detail::refuseUnless<true, core::detail::isBorderKind<B>>());

    /// The same with the address of any border, which is asked for each neighbour outside, in the
    /// order of the neighbours, and may throw.
    template <class T, class B>
    T operator()(const core::VxImage<T>& image, double x, double y, double z, unsigned int c,
                 B* border, T value)
    {
        return operator()<T, core::Border*>(image, x, y, z, c,
                                            core::detail::asBase<core::Border>(border), value);
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override;
};

/// Labels as an object, to be passed by its address. Constant-initialised; thread-safe.
extern VOLUX_RESAMPLE_API Labels LABELS;

#define VOLUX_TEMPLATE extern template VOLUX_RESAMPLE_API
#include "volux/resample/detail/Labels.inc"

}  // namespace volux::resample
