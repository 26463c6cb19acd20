// The calls that read a source through a field of displacements, and where the field leads alone.
// Both programs answer them with the same numbers. The families are named for Linear, which reads
// all fields: where its sums change, so do they.
#pragma once

#include <array>
#include <limits>
#include <string>

#include "Corpus.h"
#include "EachPolicy.h"
#include "Grids.h"
#include "Stream.h"
#include "support/WrappedVolume.h"
#include "volux/resample/Warp.h"

namespace volux::digest {

// A field and the maps about it.
template <class V>
struct Moves {
    core::VxImage<V> field;
    AffineMap toField;
    AffineMap toVoxels;
};

// Now and then far away or nowhere.
template <class V>
V move(Generator& random)
{
    constexpr std::array<double, 5> odd{std::numeric_limits<double>::quiet_NaN(),
                                        std::numeric_limits<double>::infinity(), -3e9, 1e30, -0.0};
    const double ordinary = (random.fraction() - 0.5) * 6.0;
    return static_cast<V>(random.below(200) == 0 ? random.anyOf(odd) : ordinary);
}

template <class V>
void draw(Moves<V>& moves, const Extents& source, Generator& random)
{
    constexpr std::array<unsigned int, 5> extents{1, 2, 3, 5, 7};
    const Extents nodes{random.anyOf(extents), random.anyOf(extents), random.anyOf(extents)};
    moves.field.initialize(nodes.width, nodes.height, nodes.depth, 3);
    for (unsigned int n = 0; n < 3 * nodes.width * nodes.height * nodes.depth; ++n)
        moves.field.getBufferPointer()[n] = move<V>(random);
    moves.toField = obliqueMap(random, nodes);
    moves.toVoxels = random.below(2) == 0 ? obliqueMap(random, source) : axisMap(random, source);
}

template <class T, class Calls>
class WarpRequests {
public:
    WarpRequests(unsigned int scene, unsigned int rounds, const Calls& calls, Streams& streams)
        : rounds_(rounds),
          calls_(calls),
          streams_(streams),
          random_(11000 + static_cast<unsigned int>(core::VxImage<T>().getDataType()) * kScenes +
                  scene),
          wrapped_(volume<T>(scene, random_)),
          extents_(wrapped_.volume.extents),
          withEachPolicy_(streams, random_, static_cast<double>(outsideValue<T>(scene, random_)))
    {
    }

    void answer()
    {
        for (unsigned int round = 0; round < rounds_; ++round) {
            resample<float>("resample by a Linear field of float");
            resample<double>("resample by a Linear field of double");
        }
    }

private:
    template <class V>
    void resample(const std::string& operation)
    {
        Moves<V> moves;
        draw(moves, extents_, random_);
        const Grid grid = gridOf(obliqueMap(random_, extents_), random_);
        withEachPolicy_(operation, true, [&](const Options& options, Stream& stream) {
            core::VxImage<T> result;
            result.initialize(grid.width, grid.height, grid.depth, wrapped_.image.getChannels());
            calls_.resample(wrapped_.image, grid, moves, result, options);
            append(stream, result);
        });
        for (int n = 0; n < 20; ++n) {
            const Position p = position(random_, extents_);
            const resample::Position led = calls_.lead(moves, resample::Position{p.x, p.y, p.z});
            for (const double coordinate : {led.x, led.y, led.z})
                append(streams_["positions by a Linear field"], coordinate);
        }
    }

    const unsigned int rounds_;
    const Calls& calls_;
    Streams& streams_;
    Generator random_;
    const test::WrappedVolume<T> wrapped_;
    const Extents extents_;
    const EachPolicy withEachPolicy_;
};

}  // namespace volux::digest
