// The calls whose results are means of sub-samples, on views. Both programs answer them, as they do
// those of ViewCorpus.h.
#pragma once

#include <algorithm>

#include "ViewCorpus.h"

namespace volux::digest {

template <class T, class Calls>
class MeanRequests {
public:
    MeanRequests(unsigned int scene, unsigned int rounds, const Calls& calls, Streams& streams)
        : rounds_(rounds),
          calls_(calls),
          random_(9000 + static_cast<unsigned int>(core::VxImage<T>().getDataType()) * kScenes +
                  scene),
          source_{test::WrappedVolume<T>(repeating(volume<T>(scene, random_), random_)),
                  someArrangement(random_)},
          extents_(source_.wrapped.volume.extents),
          withEachPolicy_(streams, random_, static_cast<double>(outsideValue<T>(scene, random_)))
    {
    }

    void answer()
    {
        for (unsigned int round = 0; round < rounds_; ++round) {
            source_.arrangement = someArrangement(random_);
            resample<T>("means", gridOf(obliqueMap(random_, extents_), random_));
            resample<T>("means along the axes", gridOf(axisMap(random_, extents_), random_));
            resample<double>("means into double", gridOf(axisMap(random_, extents_), random_));
            resample<T>("means of blocks", blocks());
        }
        for (unsigned int round = 0; round < rounds_; ++round) {
            source_.arrangement = someArrangement(random_);
            reslice<T>("means of slabs");
            reslice<double>("means of slabs into double");
        }
    }

private:
    // As many along each axis as the steps are long, or up to three.
    resample::Subsamples someSubsamples()
    {
        const unsigned int x = random_.below(4);
        const unsigned int y = random_.below(4);
        return {x, y, random_.below(4)};
    }

    // Blocks of whole voxels from the first on.
    Grid blocks()
    {
        Grid grid;
        const auto along = [&](int axis, unsigned int extent) {
            const unsigned int factor = std::min(1 + random_.below(4), extent);
            grid.map.rows[axis][axis] = factor;
            grid.map.rows[axis][3] = (factor - 1.0) / 2.0;
            return extent / factor;
        };
        grid.width = along(0, extents_.width);
        grid.height = along(1, extents_.height);
        grid.depth = along(2, extents_.depth);
        return grid;
    }

    template <class R>
    void resample(const std::string& operation, const Grid& grid)
    {
        const bool areBlocks = operation == "means of blocks";
        const resample::Subsamples n = areBlocks ? resample::kAntialiased : someSubsamples();
        const Arrangement to = someArrangement(random_);
        withEachPolicy_(operation, true, [&](Options options, Stream& stream) {
            options.overflow = resample::Overflow::SATURATE;  // volux_core has no mean to wrap
            options.subsamples = n;
            append(stream, calls_.template resample<R>(source_, grid, to, options));
        });
    }

    // All planes of Labels vote at once where the projection is the mean.
    template <class R>
    void reslice(const std::string& operation)
    {
        const Planes planes = somePlanes(random_, extents_);
        const Slab slab = someSlab(random_);
        const resample::Subsamples n = someSubsamples();
        const Arrangement to = someArrangement(random_);
        withEachPolicy_(operation, true, [&](Options options, Stream& stream) {
            options.overflow = resample::Overflow::SATURATE;  // volux_core has no mean to wrap
            options.subsamples = n;
            append(stream, calls_.template reslice<R>(source_, planes, to, options, slab));
        });
    }

    const unsigned int rounds_;
    const Calls& calls_;
    Generator random_;
    ViewedVolume<T> source_;
    const Extents extents_;
    const EachPolicy withEachPolicy_;
};

}  // namespace volux::digest
