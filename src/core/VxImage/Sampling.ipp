// Samples at fractional positions, in voxels or physical units, and converts the result to T.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "../InterpolationType/Kernels.ipp"
#include "../InterpolationType/RunTime.h"
#include "exact/Conversion.h"
#include "volux/core/VxImage.h"

namespace volux::core {

namespace detail {

struct Position {
    double x;
    double y;
    double z;
};

// No other double has the bits of 1.0, and a comparison of integers need not ask about NaN.
inline bool isOne(double number)
{
    constexpr std::uint64_t kBitsOfOne = 0x3FF0000000000000;
    std::uint64_t bits;
    std::memcpy(&bits, &number, sizeof bits);
    return bits == kBitsOfOne;
}

inline double inVoxels(double position, double voxelSize)
{
    return isOne(voxelSize) ? position : position / voxelSize;
}

// Converts a physical position to voxels. Most images have a spacing of 1.0, and a division takes
// as long as a good part of a kernel. Inlined, so that a position stays in registers.
[[gnu::always_inline]] inline Position inVoxels(const Position& at, const Position& voxelSize)
{
    const bool areOne = isOne(voxelSize.x) && isOne(voxelSize.y) && isOne(voxelSize.z);
    if (__builtin_expect(static_cast<long>(areOne), 1L) != 0) {
        return at;
    }
    return {inVoxels(at.x, voxelSize.x), inVoxels(at.y, voxelSize.y), inVoxels(at.z, voxelSize.z)};
}

// Calls the kernel at (x, y, z), in voxels, for a double or a voxel as it is. The channel keeps its
// bits.
template <class T, class I, class B>
auto sample(const VxImage<T>& image, double x, double y, double z, int c, I& interpolator, B border,
            T value)
{
    const unsigned int channel = static_cast<unsigned int>(c);
    if constexpr (std::is_same_v<I, Interpolator*>) {
        return RunTime::invoke(*interpolator, image, x, y, z, channel, border, value);
    } else if constexpr (std::is_same_v<I, Cubic> || std::is_same_v<B, Border*>) {
        // These kernels are long or first choose by the border: beside that a call costs little,
        // and a copy in every front end would cost much.
        return interpolator(image, x, y, z, channel, border, value);
    } else {
        return kernel(interpolator, image, x, y, z, channel, border, value);
    }
}

}  // namespace detail

// Forms without a border read 0 outside the image.

template <class T>
template <class I>
T VxImage<T>::getValueVoxel(double x, double y, double z, int c, I interpolator) const
    noexcept(detail::byValue<I>())
{
    return exact::truncateTo<T>(detail::sample(*this, x, y, z, c, interpolator, Constant(), T()));
}

template <class T>
template <class I>
T VxImage<T>::getValueVoxel(double x, double y, double z, int c, Interpolator* interpolator) const
    noexcept(detail::byAddress<I>())
{
    return exact::truncateTo<T>(detail::sample(*this, x, y, z, c, interpolator, Constant(), T()));
}

template <class T>
template <class I, class B>
T VxImage<T>::getValueVoxel(double x, double y, double z, int c, I interpolator, B border,
                            T value) const noexcept(detail::byValue<I, B>())
{
    return exact::roundTo<T>(detail::sample(*this, x, y, z, c, interpolator, border, value));
}

template <class T>
template <class I, class B>
T VxImage<T>::getValueVoxel(double x, double y, double z, int c, Interpolator* interpolator,
                            B border, T value) const noexcept(detail::byAddress<I, B>())
{
    return exact::roundTo<T>(detail::sample(*this, x, y, z, c, interpolator, border, value));
}

template <class T>
template <class I>
T VxImage<T>::getValueReal(double x, double y, double z, int c, I interpolator) const
    noexcept(detail::byValue<I>())
{
    return getValueReal<I, Constant>(x, y, z, c, interpolator, Constant(), T());
}

template <class T>
template <class I, class B>
T VxImage<T>::getValueReal(double x, double y, double z, int c, I interpolator, B border,
                           T value) const noexcept(detail::byValue<I, B>())
{
    const detail::Position at = detail::inVoxels({x, y, z}, {voxelSizeX, voxelSizeY, voxelSizeZ});
    return exact::roundTo<T>(
        detail::sample(*this, at.x, at.y, at.z, c, interpolator, border, value));
}

template <class T>
T VxImage<T>::getValueReal(double x, double y, double z, int c) const
{
    return getValueReal<Linear>(x, y, z, c, Linear());
}

template <class T>
template <class I>
double VxImage<T>::getDoubleValueReal(double x, double y, double z, int c, I interpolator) const
    noexcept(detail::byValue<I>())
{
    const detail::Position at = detail::inVoxels({x, y, z}, {voxelSizeX, voxelSizeY, voxelSizeZ});
    return detail::sample(*this, at.x, at.y, at.z, c, interpolator, Constant(), T());
}

template <class T>
template <class I, class B>
double VxImage<T>::getDoubleValueReal(double x, double y, double z, int c, I interpolator, B border,
                                      T value) const noexcept(detail::byValue<I, B>())
{
    const detail::Position at = detail::inVoxels({x, y, z}, {voxelSizeX, voxelSizeY, voxelSizeZ});
    return detail::sample(*this, at.x, at.y, at.z, c, interpolator, border, value);
}

template <class T>
template <class I, class B>
double VxImage<T>::getDoubleValueReal(double x, double y, double z, int c,
                                      Interpolator* interpolator, B border, T value) const
    noexcept(detail::byAddress<I, B>())
{
    const detail::Position at = detail::inVoxels({x, y, z}, {voxelSizeX, voxelSizeY, voxelSizeZ});
    return detail::sample(*this, at.x, at.y, at.z, c, interpolator, border, value);
}

}  // namespace volux::core
