// What planes in the world are compared with.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "resample/Expected.h"
#include "resample/WorldOracle.h"

namespace volux::test {

inline const VoxelSize kHalf(0.5, 0.5, 2.0);

inline Position positionOf(const Triple& v)
{
    return {v[0], v[1], v[2]};
}

// By numbers, so that zeros of either sign are equal.
inline void expectAxes(const Geometry& plane, const Triple& across, const Triple& down,
                       const Triple& normal)
{
    EXPECT_EQ(columnOf(plane, 0), across) << described(plane);
    EXPECT_EQ(columnOf(plane, 1), down) << described(plane);
    EXPECT_EQ(columnOf(plane, 2), normal) << described(plane);
}

// Refused in words, and by an operation as output.
inline void expectRefused(Geometry plane, const std::string& what)
{
    EXPECT_NE(plane.refusal(), nullptr) << what;
    VxImage<short> source;
    VxImage<short> result;
    source.initialize(2, 2, 2, 1);
    EXPECT_EQ(resample::resample(source, gridBetween(plane, Geometry()), &result),
              ERR_INVALID_ARGUMENT)
        << what;
    EXPECT_EQ(resample::reslice(source, resample::planesBetween(plane, Geometry()), &result),
              ERR_INVALID_ARGUMENT)
        << what;
}

// The documented formulas.
inline Geometry expectedPlane(const Triple& centre, const Triple& normal, const Triple& up,
                              unsigned int width, unsigned int height, const VoxelSize& spacing)
{
    Geometry plane;
    const Triple n = unitOf(normal);
    const Triple across = unitOf(cross(n, unitOf(up)));
    const Triple down = cross(n, across);
    setColumn(plane, 0, across);
    setColumn(plane, 1, down);
    setColumn(plane, 2, n);
    const Triple left = minus(centre, times(across, spacing.x * ((width - 1.0) / 2)));
    plane.origin = positionOf(minus(left, times(down, spacing.y * ((height - 1.0) / 2))));
    plane.width = width;
    plane.height = height;
    plane.depth = 1;
    plane.spacing = spacing;
    return plane;
}

inline ::testing::AssertionResult samePlane(const Geometry& actual, const Geometry& expected)
{
    const bool same = sameTriple(tripleOf(actual.origin), tripleOf(expected.origin)) &&
                      sameTriple(columnOf(actual, 0), columnOf(expected, 0)) &&
                      sameTriple(columnOf(actual, 1), columnOf(expected, 1)) &&
                      sameTriple(columnOf(actual, 2), columnOf(expected, 2)) &&
                      actual.spacing == expected.spacing && actual.width == expected.width &&
                      actual.height == expected.height && actual.depth == expected.depth;
    return (same ? ::testing::AssertionSuccess() : ::testing::AssertionFailure())
           << described(actual) << "; expected " << described(expected);
}

}  // namespace volux::test
