/// @file
/// Interpolation policies: how an image is read at a fractional position.
///
/// Nearest neighbour, trilinear and tricubic, each a kernel that is called like a function. A
/// kernel is chosen at compile time, by value, or at run time, as an Interpolator*; the results
/// have the same bits.
///
/// Positions are in voxels, with voxel centres at whole numbers. Results are exact to the last bit:
/// every product and sum has one grouping and one order, and nothing is fused. Policies hold no
/// state; a call allocates nothing and is safe from any number of threads while nobody writes the
/// image. A call never tests the channel.
#pragma once

#include "volux/core/Export.h"
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/detail/Served.h"

#include "volux/core/detail/ElementTypes.inc"

namespace volux::core {

/// Base of the interpolation policies, for kernels chosen at run time.
///
/// An interpolator of your own derives from Interpolator and overrides get() to return a table: an
/// object of interpolator_t<YourInterpolator, Interpolator>, if YourInterpolator can be called like
/// the kernels below, or of your own class derived from
/// interpolator_t<Interpolator, Interpolator::Empty>. It is passed by its address. A call asks
/// get() and then invoke() once.
struct VOLUX_CORE_API Interpolator {
    /// The end of the chain of tables.
    struct Empty {
        /// Root of every table.
        struct base_t {};
    };

    /// The table of a policy: one virtual invoke() for each element type and border kind.
    template <class Policy, class Parent>
    struct interpolator_t;

    VOLUX_CORE_INLINE_API Interpolator() {}  ///< A policy has no state.
    /// For the static objects alone.
    constexpr explicit Interpolator(detail::ConstantInitialized) noexcept {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Interpolator(const Interpolator&) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Interpolator& operator=(const Interpolator&) { return *this; }
    VOLUX_CORE_INLINE_API virtual ~Interpolator() {}

protected:
    /// The policy's table.
    virtual interpolator_t<Interpolator, Empty>& get() = 0;

private:
    friend struct detail::RunTime;

    /// Throw base::Exception "invalid use of Interpolator*"; reached from the base table alone.
    /// stub_p serves a Border*, and its B is spelt Border.
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
    /// Throws. There is one for each element type T with each border B: Constant, Replication or
    /// Border*.
    VOLUX_FOR_EACH_ELEMENT_TYPE(VOLUX_INVOKE_EACH_BORDER)
#undef VOLUX_INVOKE
    virtual ~interpolator_t();
};

/// The table of Policy, a class derived from Interpolator that can be called like a kernel:
/// forwards to it.
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

/// The voxel whose centre is nearest, as it is.
///
/// Per axis v + 0.5 is truncated, and one is taken off when that sum is not >= 0.0: halves round up
/// (2.5 reads voxel 3), and below zero a sum that is a negative whole number steps down by one more
/// than a floor would (-1.5 gives -2). NaN, and what does not fit 32 bits, lies outside the image.
struct VOLUX_CORE_API NearestNeighbor : Interpolator {
    VOLUX_CORE_INLINE_API NearestNeighbor() {}  ///< A policy has no state.
    /// For the static objects alone.
    constexpr explicit NearestNeighbor(detail::ConstantInitialized tag) noexcept : Interpolator(tag)
    {
    }
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API NearestNeighbor(const NearestNeighbor& other) : Interpolator(other) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API NearestNeighbor& operator=(const NearestNeighbor&) { return *this; }
    VOLUX_CORE_INLINE_API ~NearestNeighbor() override {}

    /// Samples channel c at (x, y, z), in voxels. `value` is what Constant reads outside. One read.
    template <class T, class B>
    T operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c, B border,
                 T value) noexcept(detail::byValue<NearestNeighbor, B>());

    /// The same with the address of any border.
    template <class T, class B>
    T operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c, B* border,
                 T value)
    {
        return operator()<T, Border*>(image, x, y, z, c, detail::asBase<Border>(border), value);
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override;
};

/// The eight voxels around a position, weighted by their nearness along each axis.
///
/// All eight are read, x fastest, also those of weight 0: an outside neighbour that is not finite
/// makes the result NaN. The weight is (x-weight * y-weight) * z-weight; the products value *
/// weight are added one by one, beginning with the first product. Nothing is normalised or clamped.
struct VOLUX_CORE_API Linear : Interpolator {
    VOLUX_CORE_INLINE_API Linear() {}  ///< A policy has no state.
    /// For the static objects alone.
    constexpr explicit Linear(detail::ConstantInitialized tag) noexcept : Interpolator(tag) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Linear(const Linear& other) : Interpolator(other) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Linear& operator=(const Linear&) { return *this; }
    VOLUX_CORE_INLINE_API ~Linear() override {}

    /// Samples channel c at (x, y, z), in voxels. `value` is what Constant reads outside. 8 reads.
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B border, T value) noexcept(detail::byValue<Linear, B>());

    /// The same with the address of any border.
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B* border, T value)
    {
        return operator()<T, Border*>(image, x, y, z, c, detail::asBase<Border>(border), value);
    }

protected:
    interpolator_t<Interpolator, Empty>& get() override;
};

/// The 4 x 4 x 4 voxels around a position, by cubic convolution with a = -0.5, divided by the sum
/// of all 64 weights.
///
/// R. Keys, "Cubic convolution interpolation for digital image processing", IEEE Transactions on
/// Acoustics, Speech and Signal Processing 29(6), 1981, pp. 1153-1160. The result may overshoot the
/// range of the voxels. A position that is NaN, or whose neighbourhood passes the ends of the
/// 32-bit range, gives NaN and reads nothing.
struct VOLUX_CORE_API Cubic : Interpolator {
    VOLUX_CORE_INLINE_API Cubic() {}  ///< A policy has no state.
    /// For the static objects alone.
    constexpr explicit Cubic(detail::ConstantInitialized tag) noexcept : Interpolator(tag) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Cubic(const Cubic& other) : Interpolator(other) {}
    /// There is nothing to copy.
    VOLUX_CORE_INLINE_API Cubic& operator=(const Cubic&) { return *this; }
    VOLUX_CORE_INLINE_API ~Cubic() override {}

    /// Samples channel c at (x, y, z), in voxels. `value` is what Constant reads outside. 64 reads.
    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B border, T value) noexcept(detail::byValue<Cubic, B>());

    /// The same with the address of any border.
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
/// Constant-initialised: another module's initialisers may already sample through them.
namespace InterpolationType {
extern VOLUX_CORE_API NearestNeighbor NEAREST_NEIGHBOR;  ///< one voxel
extern VOLUX_CORE_API Linear LINEAR;                     ///< 2 x 2 x 2 voxels
extern VOLUX_CORE_API Cubic CUBIC;                       ///< 4 x 4 x 4 voxels
}  // namespace InterpolationType

#undef VOLUX_FOR_EACH_ELEMENT_TYPE

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/InterpolatorStubs.inc"

#define VOLUX_TEMPLATE extern template VOLUX_CORE_API
#include "volux/core/detail/instantiations/Kernels.inc"

}  // namespace volux::core
