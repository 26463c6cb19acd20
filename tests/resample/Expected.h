// What volux_core gives, one call for each sample, and where a grid reads the value outside
// instead: what every operation of volux_resample is compared with, bit for bit.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>

#include "support/BitExact.h"
#include "support/Described.h"
#include "support/InstructionSets.h"
#include "support/LastWords.h"
#include "support/RandomScenes.h"
#include "support/Seeded.h"
#include "support/SingleCalls.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"
#include "volux/resample.h"

namespace volux::test {

using resample::Grid;

// Compares each element with the expected one, up to the first that differs.
template <class T>
void expectEverySample(const VxImage<T>& source, const AffineMap& map, const VxImage<T>& result,
                       const Options& options)
{
    for (unsigned int k = 0; k < result.getDepth(); ++k)
        for (unsigned int j = 0; j < result.getHeight(); ++j)
            for (unsigned int i = 0; i < result.getWidth(); ++i)
                for (unsigned int c = 0; c < result.getChannels(); ++c) {
                    const Position p = map(i, j, k);
                    const int channel = static_cast<int>(c);
                    ASSERT_TRUE(
                        bitEqual(at(result, i, j, k, c), gridElement(source, p, channel, options)))
                        << "voxel " << i << ' ' << j << ' ' << k << ", "
                        << describedCall(source, p, channel, options) << ", " << described(map);
                }
}

// Runs a test for each instruction set that this processor has.
template <class Test>
void forEachInstructionSet(const Test& test)
{
    for (const std::int64_t target : instructionSets()) {
        useInstructionSet(target);
        {
            const ::testing::ScopedTrace trace(__FILE__, __LINE__, hwy::TargetName(target));
            const LastWords words(hwy::TargetName(target));
            test();
        }
        useInstructionSet(0);
        if (::testing::Test::HasFatalFailure())
            return;
    }
}

// Calls visit(interpolator, border) with each kernel and border of both libraries, up to a failure.
template <class Visit>
void forEachPolicy(const Visit& visit)
{
    for (Interpolator* const interpolator : kInterpolators)
        for (Border* const border : kBorders) {
            visit(interpolator, border);
            if (::testing::Test::HasFatalFailure())
                return;
        }
}

// The same without Labels.
template <class Visit>
void forEachPolicyOfCore(const Visit& visit)
{
    forEachPolicy([&](Interpolator* interpolator, Border* border) {
        if (interpolator != &resample::LABELS)
            visit(interpolator, border);
    });
}

inline Grid gridOf(const AffineMap& map, unsigned int width, unsigned int height,
                   unsigned int depth)
{
    Grid grid;
    grid.width = width;
    grid.height = height;
    grid.depth = depth;
    grid.map = map;
    return grid;
}

template <class T>
void expectGrid(const VxImage<T>& source, const Grid& grid, const Options& options)
{
    const LastWords call(described(options) + ", " + described(grid.map));
    VxImage<T> result;
    ASSERT_EQ(resample::resample(source, grid, &result, options), SUCCESS)
        << described(options) << ", " << described(grid.map);
    expectEverySample(source, grid.map, result, options);
}

// Resamples with each kernel and border, whose edge ends and extends.
template <class T>
void expectEveryPolicy(const VxImage<T>& source, const Grid& grid, double outsideValue)
{
    forEachPolicy([&](Interpolator* interpolator, Border* border) {
        Options options(interpolator, border, outsideValue);
        expectGrid(source, grid, options);
        options.edgeExtends = true;
        expectGrid(source, grid, options);
    });
}

inline double between(Random& random, double low, double high)
{
    return low + (high - low) * fraction(random);
}

// Steps of any direction and size, whose positions pass through and beyond a source.
inline AffineMap obliqueMap(Random& random, const Extents& extents, double zoom = 1.0)
{
    AffineMap map;
    const unsigned int size[3] = {extents.width, extents.height, extents.depth};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            map.rows[row][column] = between(random, -1.5, 1.5) * zoom;
        map.rows[row][3] = between(random, -2.0, size[row] + 2.0);
    }
    return map;
}

// Steps along the axes, of either sign, with zeros of either sign beside them.
inline AffineMap axisMap(Random& random, const Extents& extents)
{
    AffineMap map = obliqueMap(random, extents);
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            if (row != column)
                map.rows[row][column] = random.below(2) == 0 ? 0.0 : -0.0;
    return map;
}

// Whole and half steps and offsets: ties, whole positions and the edges themselves.
inline AffineMap halfMap(Random& random, const Extents& extents)
{
    AffineMap map = axisMap(random, extents);
    for (auto& row : map.rows)
        for (double& number : row)
            number = std::round(number * 2.0) / 2.0;
    for (int n = 0; n < 3; ++n)
        if (map.rows[n][n] == 0.0)
            map.rows[n][n] = 0.5;
    return map;
}

// Positions beyond every index, infinite and undefined ones; half of the maps run along the axes.
inline AffineMap hugeMap(Random& random, const Extents& extents)
{
    constexpr std::array<double, 6> zooms{1e8, 2e9, 1e12, 1e100, 1e307, 1.7e308};
    AffineMap map = random.below(2) == 0 ? obliqueMap(random, extents) : axisMap(random, extents);
    const double zoom = anyOf(random, zooms) / 1.5;
    for (auto& row : map.rows)
        for (int column = 0; column < 3; ++column)
            row[column] *= zoom;
    map.rows[random.below(3)][3] =
        anyOf(random, std::array<double, 3>{-1.7e308, 2147483646.5, 0.0});
    return map;
}

template <class T>
T insideValue(Random& random)
{
    return static_cast<T>(random.below(200) + 1);
}

}  // namespace volux::test
