// The documented formulas of geometries and planes, step by step in doubles.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ios>
#include <sstream>
#include <string>
#include <utility>

#include "resample/Expected.h"

namespace volux::test {

using resample::Geometry;
using Triple = std::array<double, 3>;
using Square = std::array<Triple, 3>;  // three rows

inline Triple tripleOf(const Position& p)
{
    return {p.x, p.y, p.z};
}

inline Triple tripleOf(const VoxelSize& spacing)
{
    return {spacing.x, spacing.y, spacing.z};
}

inline Triple columnOf(const Geometry& geometry, int column)
{
    const auto& m = geometry.direction;
    return {m[0][column], m[1][column], m[2][column]};
}

// The power of two that brings the largest of three numbers to at least 1/2 and below 1.
inline int powerOf(const Triple& v)
{
    const double largest = std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])});
    return largest == 0.0 ? 0 : std::ilogb(largest) + 1;
}

inline double dot(const Triple& u, const Triple& v)
{
    const double sum = u[0] * v[0] + u[1] * v[1];
    return sum + u[2] * v[2];
}

inline double sizeOf(const Triple& v)
{
    return std::sqrt(dot(v, v));
}

inline Triple scaled(const Triple& v)
{
    Triple result{};
    for (std::size_t n = 0; n < 3; ++n)
        result.at(n) = std::scalbn(v.at(n), -powerOf(v));
    return result;
}

inline double lengthOf(const Triple& v)
{
    return std::scalbn(sizeOf(scaled(v)), powerOf(v));
}

inline Triple unitOf(const Triple& v)
{
    const Triple s = scaled(v);
    return {s[0] / sizeOf(s), s[1] / sizeOf(s), s[2] / sizeOf(s)};
}

inline Triple cross(const Triple& u, const Triple& v)
{
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

inline Triple minus(const Triple& u, const Triple& v)
{
    return {u[0] - v[0], u[1] - v[1], u[2] - v[2]};
}

inline Triple plus(const Triple& u, const Triple& v)
{
    return {u[0] + v[0], u[1] + v[1], u[2] + v[2]};
}

inline Triple times(const Triple& v, double factor)
{
    return {v[0] * factor, v[1] * factor, v[2] * factor};
}

// The inverse of an image's directions by cofactors, after rows and then columns were scaled.
inline Square inverseOf(const Geometry& geometry)
{
    Square m{};
    std::array<int, 3> rows{};
    std::array<int, 3> columns{};
    for (std::size_t r = 0; r < 3; ++r) {
        const auto& row = geometry.direction[r];
        rows.at(r) = powerOf({row[0], row[1], row[2]});
        m.at(r) = scaled({row[0], row[1], row[2]});
    }
    for (std::size_t c = 0; c < 3; ++c) {
        const Triple column{m[0].at(c), m[1].at(c), m[2].at(c)};
        columns.at(c) = powerOf(column);
        for (std::size_t r = 0; r < 3; ++r)
            m.at(r).at(c) = scaled(column).at(r);
    }
    const auto adjugate = [&](std::size_t r, std::size_t c) {
        const auto of = [&](std::size_t row, std::size_t column) {
            return m.at((c + row) % 3).at((r + column) % 3);
        };
        return of(1, 1) * of(2, 2) - of(1, 2) * of(2, 1);
    };
    double d = m[0][0] * adjugate(0, 0);
    d = d + m[0][1] * adjugate(1, 0);
    d = d + m[0][2] * adjugate(2, 0);
    Square inverse{};
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c)
            inverse.at(r).at(c) = std::scalbn(adjugate(r, c) / d, -(rows.at(c) + columns.at(r)));
    return inverse;
}

inline std::string described(const Geometry& geometry)
{
    std::ostringstream text;
    text << "extents " << geometry.width << ' ' << geometry.height << ' ' << geometry.depth
         << std::hexfloat << ", spacing " << geometry.spacing.x << ' ' << geometry.spacing.y << ' '
         << geometry.spacing.z << ", origin " << geometry.origin.x << ' ' << geometry.origin.y
         << ' ' << geometry.origin.z << ", direction";
    for (const auto& row : geometry.direction)
        text << " {" << row[0] << ", " << row[1] << ", " << row[2] << '}';
    return text.str();
}

inline ::testing::AssertionResult sameTriple(const Triple& actual, const Triple& expected)
{
    for (std::size_t n = 0; n < 3; ++n)
        if (auto same = bitEqual(actual.at(n), expected.at(n)); !same)
            return same << " in element " << n;
    return ::testing::AssertionSuccess();
}

inline Position randomPosition(Random& random, double size)
{
    return {between(random, -size, size), between(random, -size, size),
            between(random, -size, size)};
}

// A vector of length 1, made by a formula that no library uses.
inline Triple randomUnit(Random& random)
{
    const double height = between(random, -1.0, 1.0);
    const double angle = between(random, 0.0, 6.283185307179586);
    const double radius = std::sqrt(1.0 - height * height);
    return {radius * std::cos(angle), radius * std::sin(angle), height};
}

inline void setColumn(Geometry& geometry, int column, const Triple& v)
{
    for (std::size_t row = 0; row < 3; ++row)
        geometry.direction[row][column] = v.at(row);
}

// Anywhere, turned by any rotation; half of them are left-handed.
inline Geometry randomGeometry(Random& random)
{
    const Triple x = randomUnit(random);
    const Triple y = unitOf(cross(x, randomUnit(random)));
    Geometry geometry;
    setColumn(geometry, 0, x);
    setColumn(geometry, 1, y);
    setColumn(geometry, 2, times(cross(x, y), random.below(2) == 0 ? 1.0 : -1.0));
    geometry.width = 1 + random.below(40);
    geometry.height = 1 + random.below(40);
    geometry.depth = 1 + random.below(40);
    geometry.spacing =
        VoxelSize(between(random, 0.1, 4.0), between(random, 0.1, 4.0), between(random, 0.1, 4.0));
    geometry.origin = randomPosition(random, 300.0);
    return geometry;
}

// Sheared, too, with directions of any length.
inline Geometry shearedGeometry(Random& random)
{
    Geometry geometry = randomGeometry(random);
    for (int column = 0; column < 3; ++column) {
        const double length = std::exp(between(random, -250.0, 230.0));  // 1e-109 to 1e+100
        const Triple leaning = plus(columnOf(geometry, column), times(randomUnit(random), 0.5));
        setColumn(geometry, column, times(leaning, length));
    }
    return geometry;
}

// Sheared by up to four times an axis, with zeros anywhere but in some rows and columns that are a
// triangle.
inline Geometry sparseGeometry(Random& random)
{
    Geometry geometry = randomGeometry(random);
    std::array<std::size_t, 3> rows{0, 1, 2};
    std::array<std::size_t, 3> columns{0, 1, 2};
    for (std::size_t n = 3; n > 1; --n) {
        std::swap(rows.at(n - 1), rows.at(random.below(static_cast<unsigned int>(n))));
        std::swap(columns.at(n - 1), columns.at(random.below(static_cast<unsigned int>(n))));
    }
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c) {
            const double axis = between(random, 0.5, 2.0) * (random.below(2) == 0 ? 1.0 : -1.0);
            const double shear = random.below(2) == 0 ? 0.0 : between(random, -4.0, 4.0);
            geometry.direction[rows.at(r)][columns.at(c)] = r == c ? axis : r < c ? shear : 0.0;
        }
    return geometry;
}

// Of the three kinds in turn.
inline Geometry anyGeometry(Random& random, int n)
{
    return n % 3 == 0   ? randomGeometry(random)
           : n % 3 == 1 ? shearedGeometry(random)
                        : sparseGeometry(random);
}

// Whether two positions of the world are one, but for the rounding of numbers of this size.
inline ::testing::AssertionResult closeTo(const Position& actual, const Position& expected,
                                          double size)
{
    const double distance = lengthOf(minus(tripleOf(actual), tripleOf(expected)));
    if (distance <= size * 0x1p-48)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << std::hexfloat << actual.x << ' ' << actual.y << ' ' << actual.z << ", not "
           << expected.x << ' ' << expected.y << ' ' << expected.z << ": apart by "
           << std::defaultfloat << distance << ", size " << size;
}

}  // namespace volux::test
