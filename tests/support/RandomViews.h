// Views of random memory, with strides of either sign, and images of the same voxels beside them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "RandomScenes.h"
#include "volux/resample/View.h"

namespace volux::test {

using resample::View;
using resample::VoxelLayout;

inline std::string described(const VoxelLayout& l)
{
    std::ostringstream text;
    text << "view of " << l.width << ' ' << l.height << ' ' << l.depth << " voxels with "
         << l.channels << " channels, strides " << l.strideX << ' ' << l.strideY << ' ' << l.strideZ
         << ' ' << l.strideC;
    return text.str();
}

/// Calls visit(x, y, z, c) with every element of a view.
template <class Visit>
void forEachElement(const VoxelLayout& l, const Visit& visit)
{
    for (unsigned int z = 0; z < l.depth; ++z)
        for (unsigned int y = 0; y < l.height; ++y)
            for (unsigned int x = 0; x < l.width; ++x)
                for (unsigned int c = 0; c < l.channels; ++c)
                    visit(x, y, z, c);
}

template <class T>
T& elementOf(const View<T>& view, std::int64_t x, std::int64_t y, std::int64_t z, std::int64_t c)
{
    return view.data[view.strideX * x + view.strideY * y + view.strideZ * z + view.strideC * c];
}

/// The axes in any order, each of them flipped or not, with gaps or without; if `mayRepeat`, some
/// repeat one voxel.
inline VoxelLayout randomStrides(Random& random, const Extents& e, unsigned int channels,
                                 bool mayRepeat)
{
    VoxelLayout l;
    l.width = e.width;
    l.height = e.height;
    l.depth = e.depth;
    l.channels = channels;
    std::pair<std::int64_t*, unsigned int> axes[] = {{&l.strideX, e.width},
                                                     {&l.strideY, e.height},
                                                     {&l.strideZ, e.depth},
                                                     {&l.strideC, channels}};
    for (unsigned int n = 4; n > 1; --n)
        std::swap(axes[n - 1], axes[random.below(n)]);
    std::int64_t span = 1;
    for (const auto& [stride, extent] : axes) {
        const unsigned int gap = random.below(3) == 0 ? random.below(4) : 0;
        const bool repeats = mayRepeat && random.below(6) == 0;
        *stride = repeats ? 0 : span + gap;
        span += *stride * (extent - 1);
        if (random.below(2) == 0)
            *stride = -*stride;
    }
    return l;
}

/// A block of random elements and a view of some of them; and a contiguous image of those.
template <class T>
struct ViewedVolume {
    ViewedVolume(Random& random, const Extents& e, unsigned int channels, bool mayRepeat)
    {
        const VoxelLayout layout = randomStrides(random, e, channels, mayRepeat);
        std::int64_t before = random.below(5);
        std::int64_t behind = random.below(5) + 1;
        const std::pair<std::int64_t, unsigned int> axes[] = {{layout.strideX, e.width},
                                                              {layout.strideY, e.height},
                                                              {layout.strideZ, e.depth},
                                                              {layout.strideC, channels}};
        for (const auto& [stride, extent] : axes)
            (stride < 0 ? before : behind) += std::abs(stride) * (extent - 1);
        block.resize(static_cast<std::size_t>(before + behind));
        std::generate(block.begin(), block.end(), [&] { return randomElement<T>(random, false); });
        view = View<T>(block.data() + before, layout);
        const oracle::Position spacing = randomSpacing(random);
        view.spacing = VoxelSize(spacing.x, spacing.y, spacing.z);
        copy(view, image);
    }

    /// The voxels of a view, as an image of its own.
    static void copy(const View<T>& from, VxImage<T>& to)
    {
        to.initialize(from.width, from.height, from.depth, from.channels);
        to.setVoxelSize(from.spacing);
        const View<T> there = resample::viewOf(to);
        forEachElement(from, [&](auto... at) { elementOf(there, at...) = elementOf(from, at...); });
    }

    std::vector<T> block;
    View<T> view;
    VxImage<T> image;
};

}  // namespace volux::test
