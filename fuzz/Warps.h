// Displacement fields between forbidden pages, out of what the fuzzer makes up.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "Input.h"
#include "Views.h"
#include "support/SingleCalls.h"
#include "volux/resample/Warp.h"

namespace volux::fuzz {

/// A field of float or double and the maps about it, and where it leads by calls of volux_core.
class Field {
public:
    Field(Input& input, const test::AffineMap& toField, const test::AffineMap& toVoxels)
    {
        if (input.flag())
            place<float>(input);
        else
            place<double>(input);
        warp_.toField = toField;
        warp_.toVoxels = toVoxels;
    }

    const resample::Warp& warp() const { return warp_; }

    bool isRight() const { return warp_.toField.isInvertible() && warp_.toVoxels.isInvertible(); }

    test::Position lead(const test::Position& p) const
    {
        const test::Position f = test::positionOf(warp_.toField, p.x, p.y, p.z);
        const auto u = [&](int c) { return test::gridReading(vectors_, f, c, test::Options()); };
        return test::positionOf(warp_.toVoxels, p.x + u(0), p.y + u(1), p.z + u(2));
    }

private:
    template <class V>
    void place(Input& input)
    {
        static const test::GuardedPages pages;
        const std::array<unsigned int, 4> extents{1 + input.below(4), 1 + input.below(3),
                                                  1 + input.below(3), 3};
        const PlacedView<V> placed(pages, someDistances(input, extents, true), input.flag());
        std::uint64_t seed = input.raw<std::uint8_t>();
        for (V& element : placed)
            element = static_cast<V>(static_cast<int>(seed++ * 37 % 101) - 50) / 8;
        for (unsigned int own = input.below(4); own > 0; --own)
            placed.begin()[input.below(256) % static_cast<unsigned int>(
                                                  placed.end() - placed.begin())] = input.raw<V>();
        const View<V>& view = placed.view();
        vectors_.initialize(view.width, view.height, view.depth, 3);
        test::forEachElement(view, [&](auto... at) {  // a double has the same readings
            test::elementOf(resample::viewOf(vectors_), at...) =
                static_cast<double>(test::elementOf(view, at...));
        });
        warp_.field = View<const V>(view);
    }

    core::VxImage<double> vectors_;
    resample::Warp warp_;
};

}  // namespace volux::fuzz
