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
        const auto isIn = [&](int n) { return exact::isInside(at(n), extent); };
        // No extent exceeds 2^31 - 1, so nothing between two indices inside is outside.
        const bool allIn = isIn(0) && isIn(N - 1);
        isRun = allIn && stride == 1;
        for (int n = 0; n < N; ++n) {
            if constexpr (kClamped) {
                offsets[n] = stride * (allIn ? at(n) : clamped(at(n), extent));
            } else {
                inside[n] = allIn || isIn(n);
                offsets[n] = inside[n] ? stride * at(n) : 0;
            }
        }
    }

    int at(int n) const { return exact::wrappingAdd(first, n); }
};

// The N x N x N voxels from `first` on, in channel c, row by row.
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

    // Neighbours (0, j, k) to (N - 1, j, k), one after another: in the image itself if they are
    // contiguous there, else in `gathered`.
    const T* row(int j, int k, T (&gathered)[N]) const
    {
        if constexpr (Steps<N, B>::kClamped) {
            const std::int64_t start = rowStart(j, k);
            if (xs.isRun) {
                return at(start + xs.offsets[0]);
            }
            for (int i = 0; i < N; ++i) {
                gathered[i] = *at(start + xs.offsets[i]);
            }
            return gathered;
        } else {
            const bool isInside = ys.inside[j] && zs.inside[k];
            const std::int64_t start = isInside ? rowStart(j, k) : 0;
            if (isInside && xs.isRun) {
                return at(start + xs.offsets[0]);
            }
            for (int i = 0; i < N; ++i) {
                gathered[i] = isInside && xs.inside[i]
                                  ? *at(start + xs.offsets[i])
                                  : readOutside(policy, source, xs.at(i), ys.at(j), zs.at(k),
                                                channel, constant);
            }
            return gathered;
        }
    }

private:
    std::int64_t rowStart(int j, int k) const
    {
        return layout.strideC * static_cast<int>(channel) + ys.offsets[j] + zs.offsets[k];
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

// The weighted sum of the voxels around a position. Inlined, because each kernel is this and no
// more.
template <exact::Kernel K, class T, class B>
[[gnu::always_inline]] inline double weighted(const VxImage<T>& image, double x, double y, double z,
                                              unsigned int c, B& border, T value)
{
    constexpr int kReach = exact::reach(K);
    const exact::Place<K> at(x, y, z);
    if constexpr (K == exact::Kernel::CUBIC) {
        if (at.isEmpty()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
    }
    const Neighbourhood<kReach, T, B> around(image, at.x.first, at.y.first, at.z.first, c, border,
                                             value);
    T gathered[kReach];
    return at.sum([&](int j, int k) {
        return [row = around.row(j, k, gathered)](int i) { return exact::widened(row + 2 * i); };
    });
}

}  // namespace volux::core::detail
