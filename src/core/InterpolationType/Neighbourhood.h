// The voxels around a position, each axis resolved once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "VoxelLookup.h"
#include "exact/Layout.h"
#include "exact/Rules.h"
#include "volux/core/InterpolationBorderType.h"

namespace volux::core::detail {

// Whether N successive indices are inside, by one comparison: no extent exceeds 2^31 - 1, and a
// negative index exceeds that as an unsigned number.
template <int N>
bool areInside(int first, unsigned int extent)
{
    return std::uint64_t{static_cast<unsigned int>(first)} + (N - 1) < extent;
}

// N successive indices along one axis: whether each is inside, and where it leads to, in elements.
// Replication has no outside: it clamps the indices.
template <int N, class B>
struct Steps {
    static constexpr bool kClamped = std::is_same_v<B, Replication>;

    int first;
    bool isRun;
    bool inside[N];
    std::int64_t offsets[N];

    Steps(int firstIndex, unsigned int extent, std::int64_t stride) : first(firstIndex)
    {
        const bool allIn = areInside<N>(first, extent);
        isRun = allIn && stride == 1;
        for (int n = 0; n < N; ++n) {
            if constexpr (kClamped) {
                offsets[n] = stride * (allIn ? at(n) : clamped(at(n), extent));
            } else {
                inside[n] = allIn || exact::isInside(at(n), extent);
                offsets[n] = inside[n] ? stride * at(n) : 0;
            }
        }
    }

    int at(int n) const { return exact::wrappingAdd(first, n); }
};

// A row of N neighbours as numbers.
template <int N>
struct Row {
    exact::Pair pairs[N / 2];

    exact::Pair operator()(int i) const { return pairs[i]; }
};

// The N x N x N voxels from `first` on, in channel c, row by row, wherever they are.
template <int N, class T, class B>
class Neighbourhood {
public:
    Neighbourhood(const VxImage<T>& image, int firstX, int firstY, int firstZ, unsigned int c,
                  B& border, T value)
        : source(image),
          layout(image),
          xs(firstX, image.getWidth(), layout.strideX),
          ys(firstY, image.getHeight(), layout.strideY),
          zs(firstZ, image.getDepth(), layout.strideZ),
          channel(c),
          policy(border),
          constant(value)
    {
    }

    // Neighbours (0, j, k) to (N - 1, j, k). Where they are not contiguous they go to registers
    // without passing through memory: a processor waits long before it reads at once what it has
    // just written in parts.
    [[gnu::always_inline]] Row<N> row(int j, int k) const
    {
        const std::int64_t start = rowStart(j, k);
        const bool isThere = isInside(j, k);
        const bool isRun = isThere & xs.isRun;
        Row<N> found;
        for (int i = 0; i < N; i += 2) {
            if (isRun) {
                found.pairs[i / 2] = exact::widened(at(start + xs.offsets[i]));
            } else {
                const double first = voxel(i, j, k, isThere, start);
                found.pairs[i / 2] = {first, voxel(i + 1, j, k, isThere, start)};
            }
        }
        return found;
    }

private:
    // Modulo 2^64, since that of a row outside, which nobody uses, may be in no memory.
    std::int64_t rowStart(int j, int k) const
    {
        const auto bits = [](std::int64_t offset) { return static_cast<std::uint64_t>(offset); };
        return static_cast<std::int64_t>(bits(layout.strideC * static_cast<int>(channel)) +
                                         bits(ys.offsets[j]) + bits(zs.offsets[k]));
    }

    // Whether the row of neighbours (j, k) is inside, whatever its x.
    bool isInside(int j, int k) const
    {
        if constexpr (Steps<N, B>::kClamped) {
            return true;
        } else {
            return ys.inside[j] && zs.inside[k];
        }
    }

    // Neighbour (i, j, k), whose row starts there and is inside or not.
    [[gnu::always_inline]] double voxel(int i, int j, int k, bool isThere, std::int64_t start) const
    {
        if constexpr (!Steps<N, B>::kClamped) {
            if (!isThere || !xs.inside[i]) {
                return readOutside(policy, source, xs.at(i), ys.at(j), zs.at(k), channel, constant);
            }
        }
        return *at(start + xs.offsets[i]);
    }

    const T* at(std::int64_t offset) const
    {
        return layout.data + static_cast<std::ptrdiff_t>(offset);
    }

    const VxImage<T>& source;
    Layout<T> layout;
    Steps<N, B> xs;
    Steps<N, B> ys;
    Steps<N, B> zs;
    unsigned int channel;
    B& policy;
    T constant;
};

// The weighted sum where some neighbours are outside, or the rows are not contiguous.
template <exact::Kernel K, class T, class B>
[[gnu::always_inline]] inline double weightedAnywhere(const VxImage<T>& image,
                                                      const exact::Place<K>& at, unsigned int c,
                                                      B& border, T value)
{
    if constexpr (K == exact::Kernel::CUBIC) {
        if (at.isEmpty()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
    }
    const Neighbourhood<exact::reach(K), T, B> around(image, at.x.first, at.y.first, at.z.first, c,
                                                      border, value);
    return at.sum([&](int j, int k) { return around.row(j, k); });
}

// The weighted sum of the voxels around a position. Nearly always all of them are inside, which one
// test for each axis finds out; no border matters then. Inlined, because each kernel is this and no
// more.
template <exact::Kernel K, class T, class B>
[[gnu::always_inline]] inline double weighted(const VxImage<T>& image, double x, double y, double z,
                                              unsigned int c, B& border, T value)
{
    constexpr int kReach = exact::reach(K);
    const exact::Place<K> at(x, y, z);
    const Layout<T> layout(image);
    const bool areRuns = areInside<kReach>(at.x.first, image.getWidth()) &&
                         areInside<kReach>(at.y.first, image.getHeight()) &&
                         areInside<kReach>(at.z.first, image.getDepth()) && layout.strideX == 1;
    if (!areRuns) {
        return weightedAnywhere<K>(image, at, c, border, value);
    }
    const T* const first = &image(at.x.first, at.y.first, at.z.first, static_cast<int>(c));
    return at.sum([&](int j, int k) {
        const std::int64_t start = layout.strideY * j + layout.strideZ * k;
        return [row = first + static_cast<std::ptrdiff_t>(start)](int i) {
            return exact::widened(row + 2 * i);
        };
    });
}

}  // namespace volux::core::detail
