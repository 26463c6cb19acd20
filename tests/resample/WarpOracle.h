// Where a displacement field leads, from single calls of volux_core and the documented rule.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "resample/Expected.h"
#include "support/RandomViews.h"

namespace volux::test {

using resample::Warp;

/// A field of displacements with the maps about it: random memory that a view describes, and a
/// contiguous image of the same vectors for the single calls.
template <class V>
struct WarpScene {
    WarpScene(Random& random, const Extents& extents, const Extents& source, double size)
        : vectors(random, extents, 3, false)
    {
        std::generate(vectors.block.begin(), vectors.block.end(),
                      [&] { return static_cast<V>(between(random, -size, size)); });
        vectors.image.terminate();
        ViewedVolume<V>::copy(vectors.view, vectors.image);
        warp =
            Warp(vectors.view, obliqueMap(random, extents, 0.4), obliqueMap(random, source, 0.6));
    }

    /// Sets a vector in both.
    void set(const Extents& node, V x, V y, V z)
    {
        const V u[] = {x, y, z};
        for (unsigned int c = 0; c < 3; ++c) {
            elementOf(vectors.view, node.width, node.height, node.depth, c) = u[c];
            elementOf(resample::viewOf(vectors.image), node.width, node.height, node.depth, c) =
                u[c];
        }
    }

    ViewedVolume<V> vectors;
    Warp warp;
};

/// Where the source is read, for a place in the space of the vectors.
template <class V>
Position expectedPlace(const VxImage<V>& field, const Warp& warp, const Position& p)
{
    const Position f = positionOf(warp.toField, p.x, p.y, p.z);
    const auto isInView = [](double x, unsigned int n) { return -0.5 <= x && x < n - 0.5; };
    const bool isRead = isInView(f.x, field.getWidth()) && isInView(f.y, field.getHeight()) &&
                        isInView(f.z, field.getDepth());
    const auto u = [&](int c) { return isRead ? reading(field, f, c, Options()) : 0.0; };
    return positionOf(warp.toVoxels, p.x + u(0), p.y + u(1), p.z + u(2));
}

inline std::string described(const Warp& warp)
{
    return described(static_cast<const VoxelLayout&>(warp.field)) + " of vectors, to field " +
           described(warp.toField) + ", to voxels " + described(warp.toVoxels);
}

/// Compares each element with the expected one, up to the first that differs.
template <class T, class V>
void expectEveryWarpedSample(const VxImage<T>& source, const VxImage<V>& field, const Grid& grid,
                             const Warp& warp, const View<T>& result, const Options& options)
{
    forEachElement(result, [&](auto i, auto j, auto k, auto c) {
        if (::testing::Test::HasFatalFailure())
            return;
        const Position s = expectedPlace(field, warp, positionOf(grid.map, i, j, k));
        const int channel = static_cast<int>(c);
        ASSERT_TRUE(
            bitEqual(elementOf(result, i, j, k, c), gridElement(source, s, channel, options)))
            << "voxel " << i << ' ' << j << ' ' << k << ", "
            << describedCall(source, s, channel, options) << ", " << described(grid.map) << ", "
            << described(warp);
    });
}

/// Resamples and compares.
template <class T, class V>
void expectWarped(const VxImage<T>& source, const VxImage<V>& field, const Grid& grid,
                  const Warp& warp, const Options& options)
{
    const LastWords call(described(options) + ", " + described(warp));
    VxImage<T> result;
    ASSERT_EQ(resample::resample(source, grid, warp, &result, options), SUCCESS)
        << described(options) << ", " << described(warp);
    expectEveryWarpedSample(source, field, grid, warp, resample::viewOf(result), options);
}

}  // namespace volux::test
