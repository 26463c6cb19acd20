// The derivatives as volux/resample/Gradient.h defines them, one neighbour after the other.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <limits>

#include "SingleCalls.h"
#include "volux/resample/Gradient.h"

namespace volux::test::definition {

using resample::ReadingAndGradient;

inline int wrapped(std::int64_t index)
{
    return static_cast<int>(static_cast<std::uint32_t>(index));
}

inline int lower(double p)
{
    const bool fits = p > -2147483649.0 && p < 2147483648.0;
    const int truncated = fits ? static_cast<int>(p) : INT_MIN;
    return p >= 0.0 ? truncated : wrapped(std::int64_t{truncated} - 1);
}

// Stored, so that no compiler fuses it with a sum.
inline double product(double a, double b)
{
    volatile double stored = a * b;
    return stored;
}

// The weights of the neighbours along one axis, and their derivatives.
struct Along {
    int first;
    int count;
    double weights[4] = {};
    double slopes[4] = {};

    Along(double p, bool isCubic)
        : first(isCubic ? wrapped(std::int64_t{lower(p)} - 1) : lower(p)), count(isCubic ? 4 : 2)
    {
        if (!isCubic) {
            weights[1] = p - first;
            weights[0] = 1.0 - weights[1];
            slopes[0] = -1.0;
            slopes[1] = 1.0;
        }
        for (int n = 0; isCubic && n < 4; ++n) {
            const double sign = n < 2 ? 1.0 : -1.0;
            const bool isInner = n == 1 || n == 2;
            const double d = sign * (p - wrapped(std::int64_t{first} + n));
            weights[n] = isInner ? inner(d) : outer(d);
            slopes[n] = sign * (isInner ? innerSlope(d) : outerSlope(d));
        }
    }

    bool isEmpty() const { return wrapped(std::int64_t{first} + 3) < first; }

private:
    static double inner(double d)
    {
        const double d2 = product(d, d);
        return (1.0 - product(d2, 2.5)) + product(product(d2, 1.5), d);
    }
    static double outer(double d)
    {
        const double d2 = product(d, d);
        return product(((product(d, 8.0) - 4.0) - product(d2, 5.0)) + product(d2, d), -0.5);
    }
    static double innerSlope(double d) { return product(product(d, 4.5) - 5.0, d); }
    static double outerSlope(double d)
    {
        return (product(d, 5.0) - 4.0) - product(product(d, d), 1.5);
    }
};

// What is read of a voxel, inside or not.
template <class T>
double neighbour(const VxImage<T>& image, int x, int y, int z, int c, const Options& options)
{
    const auto clamp = [](int n, unsigned int extent) {
        return n < 0 ? 0 : std::min(n, static_cast<int>(extent) - 1);
    };
    const int i = clamp(x, image.getWidth());
    const int j = clamp(y, image.getHeight());
    const int k = clamp(z, image.getDepth());
    const bool isInside = i == x && j == y && k == z;
    return !isInside && options.border == kBorders[0]
               ? static_cast<double>(static_cast<T>(options.outside))
               : static_cast<double>(image(i, j, k, c));
}

template <class Term>
double sum(int count, const Term& term)
{
    double total = term(0);
    for (int n = 1; n < count; ++n)
        total += term(n);
    return total;
}

// The neighbours weighted along each axis and summed: rows, then slices, then all.
template <class T>
struct Sums {
    const VxImage<T>& image;
    const Along x;
    const Along y;
    const Along z;
    int channel;
    const Options& options;

    double by(const double* xs, const double* ys, const double* zs) const
    {
        return sum(z.count, [&](int k) { return product(slice(xs, ys, k), zs[k]); });
    }

private:
    double slice(const double* xs, const double* ys, int k) const
    {
        return sum(y.count, [&](int j) { return product(row(xs, j, k), ys[j]); });
    }
    double row(const double* xs, int j, int k) const
    {
        return sum(x.count, [&](int i) {
            return product(neighbour(image, at(x, i), at(y, j), at(z, k), channel, options), xs[i]);
        });
    }
    static int at(const Along& axis, int n) { return wrapped(std::int64_t{axis.first} + n); }
};

inline double total(const double (&numbers)[4])
{
    return sum(4, [&](int n) { return numbers[n]; });
}

// By the quotient rule.
inline ReadingAndGradient divided(const ReadingAndGradient& sums, const Along& x, const Along& y,
                                  const Along& z)
{
    const double xs = total(x.weights);
    const double ys = total(y.weights);
    const double zs = total(z.weights);
    const double weights = product(product(xs, ys), zs);
    const auto of = [&](double found, double a, double b, double c) {
        return (found - product(sums.value, product(product(a, b), c))) / weights;
    };
    return {sums.value, of(sums.x, total(x.slopes), ys, zs), of(sums.y, xs, total(y.slopes), zs),
            of(sums.z, xs, ys, total(z.slopes))};
}

/// What sampleGradient() gives by voxels.
template <class T>
ReadingAndGradient gradient(const VxImage<T>& image, const Position& p, int c,
                            const Options& options)
{
    const double r = reading(image, p, c, options);
    if (options.interpolator == kInterpolators[0])
        return {r, 0.0, 0.0, 0.0};
    const bool isCubic = options.interpolator == kInterpolators[2];
    const Sums<T> sums = {image,  Along(p.x, isCubic), Along(p.y, isCubic), Along(p.z, isCubic), c,
                          options};
    const Along& x = sums.x;
    const Along& y = sums.y;
    const Along& z = sums.z;
    if (isCubic && (x.isEmpty() || y.isEmpty() || z.isEmpty())) {
        constexpr double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan, nan, nan};
    }
    const ReadingAndGradient found = {r, sums.by(x.slopes, y.weights, z.weights),
                                      sums.by(x.weights, y.slopes, z.weights),
                                      sums.by(x.weights, y.weights, z.slopes)};
    return isCubic ? divided(found, x, y, z) : found;
}

}  // namespace volux::test::definition
