// Views between forbidden pages, with strides of either sign, out of what the fuzzer makes up.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "Input.h"
#include "Scene.h"
#include "support/GuardedPages.h"
#include "support/RandomViews.h"
#include "volux/resample/View.h"

namespace volux::fuzz {

using resample::View;
using resample::VoxelLayout;

/// The distances of a view, and where among the elements that it spans its first voxel is.
struct Distances {
    VoxelLayout layout;
    std::int64_t first = 0;
    std::int64_t elements = 1;
};

/// The axes in any order, each of them flipped or not, with unused elements in between or without.
/// If `mayRepeat`, some may repeat one voxel.
inline Distances someDistances(Input& input, const std::array<unsigned int, 4>& extents,
                               bool mayRepeat)
{
    Distances made;
    VoxelLayout& l = made.layout;
    l.width = extents[0];
    l.height = extents[1];
    l.depth = extents[2];
    l.channels = extents[3];
    const std::array<std::int64_t*, 4> strides{&l.strideC, &l.strideX, &l.strideY, &l.strideZ};
    const unsigned int turn = input.below(4);
    const unsigned int gap = input.below(3);
    const unsigned int flips = input.below(16);
    const unsigned int repeats = mayRepeat && input.below(4) == 0 ? input.below(16) : 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t n = (i + turn) % 4;
        const bool isRepeated = (repeats >> n & 1U) != 0;
        const std::int64_t stride = isRepeated ? 0 : made.elements + (i == 0 ? 0 : gap);
        const std::int64_t span = stride * (extents[(n + 3) % 4] - 1);
        const bool isFlipped = (flips >> n & 1U) != 0;
        made.elements += span;
        made.first += isFlipped ? span : 0;
        *strides[n] = isFlipped ? -stride : stride;
    }
    return made;
}

/// The view at one end of the pages.
template <class T>
class PlacedView {
public:
    PlacedView(const test::GuardedPages& pages, const Distances& distances, bool atEnd)
        : elements_(static_cast<std::size_t>(distances.elements)),
          block_(pages.place<T>(elements_, atEnd)),
          view_(block_ + distances.first, distances.layout)
    {
    }

    const View<T>& view() const { return view_; }
    T* begin() const { return block_; }
    T* end() const { return block_ + elements_; }

private:
    std::size_t elements_;
    T* block_;
    View<T> view_;
};

/// A small source, and an image of the same voxels that lie side by side.
template <class T>
struct Source {
    View<const T> view;
    core::VxImage<T> image;
};

template <class T>
void placeSource(const test::GuardedPages& pages, Input& input, Source<T>& source)
{
    const std::array<unsigned int, 4> extents{1 + input.below(5), 1 + input.below(5),
                                              1 + input.below(5), 1 + input.below(2)};
    const PlacedView<T> placed(pages, someDistances(input, extents, true), input.flag());
    const std::uint64_t seed = input.raw<std::uint8_t>();
    std::uint64_t next = 0;
    for (T& element : placed)
        element = test::someValue<T>(seed + next++);
    for (unsigned int own = input.below(16); own > 0; --own)
        placed.begin()[input.below(256) % static_cast<unsigned int>(next)] = input.raw<T>();
    View<T> view = placed.view();
    const oracle::Position spacing = someSpacings(input);
    view.spacing = core::VoxelSize(spacing.x, spacing.y, spacing.z);
    test::ViewedVolume<T>::copy(view, source.image);
    source.view = view;
}

}  // namespace volux::fuzz
