// What sampling must yield, written a second time from the definitions: one plain step after the
// other, nothing hoisted, no code shared with the library. Indices live in 64 bits, so that
// every wrap to 32 bits is spelt out.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "Volume.h"

namespace volux::test::oracle {

constexpr std::int64_t kIntMin = -2147483648LL;
constexpr std::int64_t kIntMax = 2147483647LL;

// Two's complement with 32 bits.
std::int64_t wrapTo32Bits(std::int64_t number);

// Toward zero; the smallest number of `bits` bits for NaN and for all that does not fit.
std::int64_t truncateToSigned(double value, int bits);

double roundHalfAwayFromZero(double value);

// Truncation, and one less unless the coordinate is at least zero.
std::int64_t lowerIndex(double coordinate);

std::int64_t nearestIndex(double coordinate);

// The convolution kernel at a distance of zero or more.
double cubicKernel(double distance);

// Clamped to the edge: raised to zero first, then lowered to extent - 1.
std::int64_t clampToEdge(std::int64_t index, std::int64_t extent);

// Outside policies: what an index outside the volume reads.
template <class T>
struct ConstantOutside {
    T value;
    T operator()(const Volume<T>&, std::int64_t, std::int64_t, std::int64_t, std::int64_t) const
    {
        return value;
    }
};

template <class T>
struct ReplicatedOutside {
    T operator()(const Volume<T>& volume, std::int64_t x, std::int64_t y, std::int64_t z,
                 std::int64_t c) const
    {
        return volume.at(clampToEdge(x, volume.extents.width),
                         clampToEdge(y, volume.extents.height),
                         clampToEdge(z, volume.extents.depth), c);
    }
};

// The integer position sampler, with a channel and an outside policy already chosen.
template <class T, class Outside>
struct Reader {
    const Volume<T>& volume;
    std::int64_t channel;
    Outside outside;

    T operator()(std::int64_t x, std::int64_t y, std::int64_t z) const
    {
        return volume.holds(x, y, z) ? volume.at(x, y, z, channel)
                                     : outside(volume, x, y, z, channel);
    }
};

template <class Read>
auto nearest(const Read& read, const Position& p)
{
    return read(nearestIndex(p.x), nearestIndex(p.y), nearestIndex(p.z));
}

// Base corner and the weights of the lower and the upper neighbour of one axis.
struct LinearAxis {
    std::int64_t base;
    std::array<double, 2> weight;
};

LinearAxis linearAxis(double coordinate);

template <class Read>
double linear(const Read& read, const Position& p)
{
    const LinearAxis ax = linearAxis(p.x);
    const LinearAxis ay = linearAxis(p.y);
    const LinearAxis az = linearAxis(p.z);
    const auto product = [&](std::size_t a, std::size_t b, std::size_t e) {
        const auto voxel = read(wrapTo32Bits(ax.base + static_cast<std::int64_t>(a)),
                                wrapTo32Bits(ay.base + static_cast<std::int64_t>(b)),
                                wrapTo32Bits(az.base + static_cast<std::int64_t>(e)));
        const double planeWeight = ax.weight[a] * ay.weight[b];
        const double weight = planeWeight * az.weight[e];
        return static_cast<double>(voxel) * weight;
    };
    double sum = product(0, 0, 0);
    sum = sum + product(1, 0, 0);
    sum = sum + product(0, 1, 0);
    sum = sum + product(1, 1, 0);
    sum = sum + product(0, 0, 1);
    sum = sum + product(1, 0, 1);
    sum = sum + product(0, 1, 1);
    sum = sum + product(1, 1, 1);
    return sum;
}

struct CubicNeighbour {
    std::int64_t index;
    double weight;
};

// The neighbours that the loop over one axis visits, each with its weight; none where the end of
// the loop wraps to a number below its start.
struct CubicAxis {
    std::array<CubicNeighbour, 4> neighbours;
    std::size_t count = 0;

    const CubicNeighbour* begin() const { return neighbours.data(); }
    const CubicNeighbour* end() const { return neighbours.data() + count; }
};

CubicAxis cubicAxis(double coordinate);

template <class Read>
double cubic(const Read& read, const CubicAxis& ax, const CubicAxis& ay, const CubicAxis& az)
{
    double sum = 0.0;
    double weightSum = 0.0;
    for (const CubicNeighbour& z : az) {
        for (const CubicNeighbour& y : ay) {
            for (const CubicNeighbour& x : ax) {
                const double planeWeight = y.weight * x.weight;
                const double weight = planeWeight * z.weight;
                const double voxel = static_cast<double>(read(x.index, y.index, z.index));
                weightSum = weightSum + weight;
                sum = sum + voxel * weight;
            }
        }
    }
    return sum / weightSum;
}

template <class Read>
double cubic(const Read& read, const Position& p)
{
    return cubic(read, cubicAxis(p.x), cubicAxis(p.y), cubicAxis(p.z));
}

// Physical to voxel coordinates.
inline Position divide(const Position& physical, const Position& spacing)
{
    return {physical.x / spacing.x, physical.y / spacing.y, physical.z / spacing.z};
}

float narrowToFloat(double value);

// The low bits of a signed 64-bit number as an integer of type T.
template <class T>
T lowBits(std::int64_t number)
{
    constexpr int bits = std::numeric_limits<std::make_unsigned_t<T>>::digits;
    const std::int64_t modulus = std::int64_t{1} << bits;
    std::int64_t low = number % modulus;
    if (low < 0)
        low += modulus;
    if (low > static_cast<std::int64_t>(std::numeric_limits<T>::max()))
        low -= modulus;
    return static_cast<T>(low);
}

// A double as element type T without rounding first.
template <class T>
T truncateTo(double value)
{
    if constexpr (std::is_same_v<T, double>)
        return value;
    else if constexpr (std::is_same_v<T, float>)
        return narrowToFloat(value);
    else if constexpr (std::is_same_v<T, short> || std::is_same_v<T, int>)
        return lowBits<T>(truncateToSigned(value, 32));
    else
        return lowBits<T>(truncateToSigned(value, 64));
}

template <class T>
T roundTo(double value)
{
    return truncateTo<T>(roundHalfAwayFromZero(value));
}

enum class Kernel { Nearest, Linear, Cubic };
enum class Border { None, Constant, Replication };
enum class Form { ValueVoxel, ValueReal, DoubleValueReal, KernelAlone };

template <class Read>
double interpolate(Kernel kernel, const Read& read, const Position& p)
{
    switch (kernel) {
        case Kernel::Nearest:
            return static_cast<double>(nearest(read, p));
        case Kernel::Linear:
            return linear(read, p);
        default:
            return cubic(read, p);
    }
}

// One call of a sampling operation.
template <class T>
struct Request {
    Form form;
    Kernel kernel;
    Border border;
    Position position;
    std::int64_t channel;
    T value;
};

// The conversion of a kernel's result that a form makes; a T fits into the double exactly.
template <class T>
double finish(const Request<T>& request, double result)
{
    if (request.form == Form::DoubleValueReal || request.form == Form::KernelAlone)
        return result;
    const bool truncates = request.form == Form::ValueVoxel && request.border == Border::None;
    return static_cast<double>(truncates ? truncateTo<T>(result) : roundTo<T>(result));
}

// The kernel's result with an outside policy of any kind.
template <class T, class Outside>
double interpolateWith(const Volume<T>& volume, const Request<T>& request, const Outside& outside)
{
    const bool physical = request.form == Form::ValueReal || request.form == Form::DoubleValueReal;
    const Position voxel = physical ? divide(request.position, volume.spacing) : request.position;
    const Reader<T, Outside> read{volume, request.channel, outside};
    return interpolate(request.kernel, read, voxel);
}

// The kernel's result with the outside policy that the request names.
template <class T>
double interpolate(const Volume<T>& volume, const Request<T>& request)
{
    if (request.border == Border::Replication)
        return interpolateWith(volume, request, ReplicatedOutside<T>{});
    const T value = request.border == Border::Constant ? request.value : T{0};
    return interpolateWith(volume, request, ConstantOutside<T>{value});
}

template <class T>
double sample(const Volume<T>& volume, const Request<T>& request)
{
    return finish(request, interpolate(volume, request));
}

}  // namespace volux::test::oracle
