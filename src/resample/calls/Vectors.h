// Vectors of three doubles. Results are documented to the last bit: every product and sum keeps its
// grouping and its order.
#pragma once

#include <cmath>

#include "Matrix.h"
#include "volux/resample/AffineMap.h"

namespace volux::resample::detail {

inline Position operator+(const Position& u, const Position& v)
{
    return {u.x + v.x, u.y + v.y, u.z + v.z};
}

inline Position operator-(const Position& u, const Position& v)
{
    return {u.x - v.x, u.y - v.y, u.z - v.z};
}

inline Position operator*(const Position& v, double factor)
{
    return {v.x * factor, v.y * factor, v.z * factor};
}

inline Position operator/(const Position& v, double divisor)
{
    return {v.x / divisor, v.y / divisor, v.z / divisor};
}

inline double dotProduct(const Position& u, const Position& v)
{
    return (u.x * v.x + u.y * v.y) + u.z * v.z;
}

inline Position crossProduct(const Position& a, const Position& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// A vector divided by a power of two that leaves its square a double, and the exponent of that.
struct Scaled {
    Position vector;
    int exponent;

    explicit Scaled(const Position& v)
        : vector(v), exponent(normalise(vector.x, vector.y, vector.z))
    {
    }

    double length() const { return std::sqrt(dotProduct(vector, vector)); }
};

inline double lengthOf(const Position& v)
{
    const Scaled scaled(v);
    return std::ldexp(scaled.length(), scaled.exponent);
}

// NaN where v is zero.
inline Position unit(const Position& v)
{
    const Scaled scaled(v);
    return scaled.vector / scaled.length();
}

}  // namespace volux::resample::detail
