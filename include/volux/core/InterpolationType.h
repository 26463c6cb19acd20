/// @file
/// Interpolation policies: how an image is read at a fractional position.
///
/// There are three: nearest neighbour, trilinear and tricubic. Each is a kernel, called like a
/// function. A kernel is chosen at compile time, by value, or at run time, as an Interpolator*; the
/// results have the same bits.
///
/// Positions are in voxels, with voxel centres at whole numbers. Results are exact to the last bit:
/// every product and sum has one grouping and one order, and nothing is fused. A call never tests
/// the channel: one out of bounds reads another element, or outside the buffer. It throws only what
/// a border chosen at run time throws.
///
/// Policies hold no state. A call allocates nothing and is thread-safe while nobody modifies the
/// image.
#pragma once

#include "volux/core/Export.h"
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/detail/Served.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::core {

/// Base of the interpolation policies, for kernels chosen at run time.
///
/// An interpolator of your own derives from Interpolator and overrides get() to return a table. The
/// table is an object of interpolator_t<YourInterpolator, Interpolator>, if YourInterpolator can be
/// called like the kernels below, or of your own class derived from
/// interpolator_t<Interpolator, Interpolator::Empty>.
///
/// Such an interpolator is passed by its address, and the object must be alive during the call. A
/// call asks get() and then invoke() once. What they throw passes through the sampling call. An
/// interpolator used by several threads must be thread-safe.
struct VOLUX_CORE_API Interpolator {
    /// The end of the chain of tables.
    struct Empty {
        /// Root of every table.
        struct base_t {};
    };

    /// The table of a policy: one virtual invoke() for each element type and border kind.
    template <class Policy, class Parent>
    struct interpolator_t;

    /// @{
    /// A policy has no state to set, copy or free. Never throws; thread-safe.
    VOLUX_CORE_INLINE_API Interpolator() {}
    constexpr explicit Interpolator(detail::ConstantInitialized) noexcept {}
    VOLUX_CORE_INLINE_API Interpolator(const Interpolator&) {}
    VOLUX_CORE_INLINE_API Interpolator& operator=(const Interpolator&) { return *this; }
    VOLUX_CORE_INLINE_API virtual ~Interpolator() {}
    /// @}

protected:
    /// The policy's table. Not const, because constness is part of the exported name.
    virtual interpolator_t<Interpolator, Empty>& get() = 0;

private:
    friend struct detail::RunTime;

    /// Throw base::Exception "invalid use of Interpolator*". Only the base table calls them. stub_p
    /// serves a Border*; its B is spelt Border, because that is part of the exported name.
    template <class T, class B>
    static double stub(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                       B border, T value);
    template <class T, class B>
    static double stub_p(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                         Border* border, T value);
};

/// The base table. Every invoke() throws base::Exception "invalid use of Interpolator*".
template <>
struct VOLUX_CORE_API Interpolator::interpolator_t<Interpolator, Interpolator::Empty>
    : Interpolator::Empty::base_t {
#define VOLUX_INVOKE(T, B)                                                                   \
    virtual double invoke(Interpolator& policy, const VxImage<T>& image, double x, double y, \
                          double z, unsigned int c, B border, T value);
#define VOLUX_INVOKE_EACH_BORDER(T) \
    VOLUX_INVOKE(T, Replication)    \
    VOLUX_INVOKE(T, Constant)       \
    VOLUX_INVOKE(T, Border*)
    /// Throws base::Exception. There is one for each element type T with each border B:
    /// Replication, Constant and Border*.
    VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_INVOKE_EACH_BORDER)
#undef VOLUX_INVOKE
    virtual ~interpolator_t();
};

/// The table of Policy, a class derived from Interpolator that can be called like a kernel.
template <class Policy, class Parent>
struct VOLUX_CORE_LOCAL Interpolator::interpolator_t
    : Interpolator::interpolator_t<Interpolator, Interpolator::Empty> {
#define VOLUX_INVOKE(T, B)                                                                     \
    double invoke(Interpolator& policy, const VxImage<T>& image, double x, double y, double z, \
                  unsigned int c, B border, T value) override                                  \
    {                                                                                          \
        return static_cast<double>(                                                            \
            static_cast<Policy&>(policy)(image, x, y, z, c, border, value));                   \
    }
    /// Calls the policy. There is one for each element type T with each border B.
    VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_INVOKE_EACH_BORDER)
#undef VOLUX_INVOKE
#undef VOLUX_INVOKE_EACH_BORDER
};

/// Reads the voxel whose centre is nearest, as it is.
///
/// Along each axis, the index is the position plus 0.5, truncated, minus one if that sum is
/// negative or NaN. So halves round up (2.5 reads voxel 3), and a sum that is a negative whole
/// number steps down by one more than a floor would (-1.5 gives -2): the results are fixed. A
/// position that is NaN or does not fit 32 bits is outside the image.
struct VOLUX_CORE_API NearestNeighbor : Interpolator {
    /// @{
    /// A policy has no state to set, copy or free. Never throws; thread-safe.
    VOLUX_CORE_INLINE_API NearestNeighbor() {}
    constexpr explicit NearestNeighbor(detail::ConstantInitialized tag) noexcept : Interpolator(tag)
    {
    }
    VOLUX_CORE_INLINE_API NearestNeighbor(const NearestNeighbor& other) : Interpolator(other) {}
    VOLUX_CORE_INLINE_API NearestNeighbor& operator=(const NearestNeighbor&) { return *this; }
    VOLUX_CORE_INLINE_API ~NearestNeighbor() override {}
    /// @}

    /// Samples channel c at (x, y, z), in voxels, with 1 read. Constant reads `value` outside.
    template <class T, class B>
    T operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c, B border,
                 T value) noexcept(detail::byValue<NearestNeighbor, B>());

    /// The same with the address of any border, which may throw.
    template <class T, class B>
    T operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c, B* border,
                 T value)
    {
        return operator()<T, Border*>(image, x, y, z, c, detail::asBase<Border>(border), value);
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override;
};

/// Weights the eight voxels around a position by their nearness along each axis.
///
/// The lower index along each axis is the position truncated, minus one if the position is negative
/// or NaN. The kernel reads all eight voxels, x fastest, even those of weight 0: a neighbour that
/// is not finite then makes the result NaN. A weight is (x-weight * y-weight) * z-weight; the
/// products value * weight are added one by one, starting from the first. Nothing is normalised or
/// clamped.
struct VOLUX_CORE_API Linear : Interpolator {
    /// @{
    /// A policy has no state to set, copy or free. Never throws; thread-safe.
    VOLUX_CORE_INLINE_API Linear() {}
    constexpr explicit Linear(detail::ConstantInitialized tag) noexcept : Interpolator(tag) {}
    VOLUX_CORE_INLINE_API Linear(const Linear& other) : Interpolator(other) {}
    VOLUX_CORE_INLINE_API Linear& operator=(const Linear&) { return *this; }
    VOLUX_CORE_INLINE_API ~Linear() override {}
    /// @}

    /// Samples channel c at (x, y, z), in voxels, with 8 reads. Constant reads `value` outside.
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B border, T value) noexcept(detail::byValue<Linear, B>());

    /// The same with the address of any border, which may throw.
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B* border, T value)
    {
        return operator()<T, Border*>(image, x, y, z, c, detail::asBase<Border>(border), value);
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override;
};

/// Convolves the 4 x 4 x 4 voxels around a position with the cubic kernel for a = -0.5 and divides
/// by the sum of all 64 weights.
///
/// R. Keys, "Cubic convolution interpolation for digital image processing", IEEE Transactions on
/// Acoustics, Speech and Signal Processing 29(6), 1981, pp. 1153-1160. The index rule is that of
/// Linear. The result may overshoot the range of the voxels. A position that is NaN, or whose
/// neighbourhood passes the ends of the 32-bit range, gives NaN and reads nothing.
struct VOLUX_CORE_API Cubic : Interpolator {
    /// @{
    /// A policy has no state to set, copy or free. Never throws; thread-safe.
    VOLUX_CORE_INLINE_API Cubic() {}
    constexpr explicit Cubic(detail::ConstantInitialized tag) noexcept : Interpolator(tag) {}
    VOLUX_CORE_INLINE_API Cubic(const Cubic& other) : Interpolator(other) {}
    VOLUX_CORE_INLINE_API Cubic& operator=(const Cubic&) { return *this; }
    VOLUX_CORE_INLINE_API ~Cubic() override {}
    /// @}

    /// Samples channel c at (x, y, z), in voxels, with 64 reads. Constant reads `value` outside.
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B border, T value) noexcept(detail::byValue<Cubic, B>());

    /// The same with the address of any border, which may throw.
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B* border, T value)
    {
        return operator()<T, Border*>(image, x, y, z, c, detail::asBase<Border>(border), value);
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override;
};

/// The three interpolation policies as objects, to be passed by value, or by address as an
/// Interpolator*.
///
/// They are constant-initialised, because another library's initialisers may already sample through
/// them, and not const, because an Interpolator* must be able to point to them. Thread-safe.
namespace InterpolationType {
extern VOLUX_CORE_API NearestNeighbor NEAREST_NEIGHBOR;  ///< reads one voxel
extern VOLUX_CORE_API Linear LINEAR;                     ///< reads 2 x 2 x 2 voxels
extern VOLUX_CORE_API Cubic CUBIC;                       ///< reads 4 x 4 x 4 voxels
}  // namespace InterpolationType

#undef VOLUX_FOR_EACH_ELEMENT_TYPE

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/InterpolatorStubs.inc"

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/Kernels.inc"

}  // namespace volux::core
