// The calls on whole volumes that digests are taken of, and the stream of their results. `Calls`
// answers them: volux_resample, or one call of volux_core for each sample. Like the volumes, not
// one number of it may change, and every product that is added to is exact. On grids the edge of
// Replication extends, except in the families where it ends with the field of view.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "Corpus.h"
#include "EachPolicy.h"
#include "Grids.h"
#include "MeanCorpus.h"
#include "PlaceCorpus.h"
#include "Stream.h"
#include "ViewCorpus.h"
#include "WarpCorpus.h"
#include "support/WrappedVolume.h"
#include "volux/resample/Resample.h"

namespace volux::digest {

using resample::Align;

// Two requests have results that are large enough for many threads.
constexpr unsigned int kLargeScene = 5;
constexpr unsigned int kLargeRound = 4;

// A destination: an image of its own, or the caller's memory with gaps in it, which are digested
// as well: nothing may be written there.
template <class T>
class Destination {
public:
    Destination(unsigned int width, unsigned int height, unsigned int depth, unsigned int channels,
                bool isWrapped)
    {
        if (!isWrapped) {
            image.initialize(width, height, depth, channels);
            return;
        }
        const unsigned int x = channels + 1;
        const unsigned int y = x * width + 2;
        const unsigned int z = y * height + 3;
        block_.resize(std::size_t{z} * depth, T{77});
        image.initializeWithPointer(block_.data(), width, height, depth, channels);
        image.setImageStride(y, z, 1, x);
    }

    void appendTo(Stream& stream) const
    {
        if (block_.empty())
            return append(stream, image);
        for (const T element : block_)
            append(stream, static_cast<double>(element));
    }

    core::VxImage<T> image;

private:
    std::vector<T> block_;
};

template <class T, class Calls>
class Requests {
public:
    Requests(unsigned int scene, unsigned int rounds, const Calls& calls, Streams& streams)
        : scene_(scene),
          rounds_(rounds),
          calls_(calls),
          random_(1000 + static_cast<unsigned int>(core::VxImage<T>().getDataType()) * kScenes +
                  scene),
          wrapped_(volume<T>(scene, random_)),
          extents_(wrapped_.volume.extents),
          withEachPolicy_(streams, random_, static_cast<double>(outsideValue<T>(scene, random_)))
    {
    }

    void answer()
    {
        for (unsigned int round = 0; round < rounds_; ++round) {
            resampleOnto("resample", gridOf(obliqueMap(random_, extents_), random_));
            resampleOnto("resample along the axes", gridOf(axisMap(random_, extents_), random_));
            resampleOnto("resample far away", gridOf(farMap(random_, extents_), random_));
            reslice();
            resize();
            samplePositions();
            if (scene_ == kLargeScene && round == kLargeRound)
                resampleLarge();
        }
    }

private:
    Destination<T> destination(unsigned int width, unsigned int height, unsigned int depth,
                               bool isWrapped) const
    {
        return {width, height, depth, wrapped_.image.getChannels(), isWrapped};
    }

    void resampleOnto(const std::string& operation, const Grid& grid)
    {
        const bool isWrapped = random_.below(2) == 0;
        withEachPolicy_(operation, true, [&](const Options& options, Stream& stream) {
            Destination<T> to = destination(grid.width, grid.height, grid.depth, isWrapped);
            calls_.resample(wrapped_.image, grid, to.image, options);
            to.appendTo(stream);
        });
    }

    void resampleLarge()
    {
        Grid oblique = gridOf(obliqueMap(random_, extents_), random_);
        Grid along = gridOf(axisMap(random_, extents_), random_);
        for (Grid* const grid : {&oblique, &along}) {
            for (auto& row : grid->map.rows)
                for (std::size_t column = 0; column < 3; ++column)
                    row[column] *= 0.125;
            grid->width = 301;
            grid->height = 29;
            grid->depth = 5;
        }
        resampleOnto("resample", oblique);
        resampleOnto("resample along the axes", along);
    }

    void reslice()
    {
        const Planes planes = somePlanes(random_, extents_);
        const Slab slab = someSlab(random_);
        withEachPolicy_("reslice", true, [&](Options options, Stream& stream) {
            options.overflow = resample::Overflow::SATURATE;  // volux_core has no mean to wrap
            Destination<T> to = destination(planes.width, planes.height, planes.count, false);
            calls_.reslice(wrapped_.image, planes, to.image, options, slabFor(options, slab));
            to.appendTo(stream);
        });
    }

    void resize()
    {
        const unsigned int width = 2 + random_.below(19);
        const unsigned int height = 2 + random_.below(5);
        const unsigned int depth = 2 + random_.below(3);
        const bool hasCentres = extents_.width > 1 && extents_.height > 1 && extents_.depth > 1;
        const bool isCentred = random_.below(2) == 0 && hasCentres;
        const Align align = isCentred ? Align::CENTRES : Align::EDGES;
        withEachPolicy_("resize", false, [&](const Options& options, Stream& stream) {
            Destination<T> to = destination(width, height, depth, false);
            calls_.resize(wrapped_.image, align, to.image, options);
            to.appendTo(stream);
        });
    }

    std::vector<resample::Position> positions(resample::Units units)
    {
        std::vector<resample::Position> all;
        const test::oracle::Position& unit = wrapped_.volume.spacing;
        for (int n = 0; n < 40; ++n) {
            const Position p = position(random_, extents_);
            const bool isPhysical = units == resample::Units::PHYSICAL;
            all.push_back(isPhysical ? resample::Position{p.x * unit.x, p.y * unit.y, p.z * unit.z}
                                     : resample::Position{p.x, p.y, p.z});
        }
        return all;
    }

    void samplePositions()
    {
        using resample::Units;
        const Units units = random_.below(2) == 0 ? Units::VOXELS : Units::PHYSICAL;
        const bool asItIs = random_.below(2) == 0;
        const std::vector<resample::Position> places = positions(units);
        withEachPolicy_("sample", false, [&](const Options& options, Stream& stream) {
            if (asItIs)
                sampleInto(std::vector<double>(), places, units, options, stream);
            else
                sampleInto(std::vector<T>(), places, units, options, stream);
        });
    }

    template <class Result>
    void sampleInto(std::vector<Result> results, const std::vector<resample::Position>& places,
                    resample::Units units, const Options& options, Stream& stream) const
    {
        results.resize(places.size() * wrapped_.image.getChannels());
        calls_.sample(wrapped_.image, places, units, results.data(), options);
        for (const Result result : results)
            append(stream, static_cast<double>(result));
    }

    const unsigned int scene_;
    const unsigned int rounds_;
    const Calls& calls_;
    Generator random_;
    const test::WrappedVolume<T> wrapped_;
    const Extents extents_;
    const EachPolicy withEachPolicy_;
};

template <class T, class Calls>
void digestBulk(unsigned int rounds, const Calls& calls)
{
    Streams streams;
    for (unsigned int scene = 0; scene < kScenes; ++scene) {
        Requests<T, Calls>(scene, rounds, calls, streams).answer();
        ViewRequests<T, Calls>(scene, rounds, calls, streams).answer();
        WarpRequests<T, Calls>(scene, rounds, calls, streams).answer();
        MeanRequests<T, Calls>(scene, rounds, calls, streams).answer();
        PlaceRequests<T, Calls>(scene, rounds, calls, streams).answer();
    }
    write(streams);
}

// Writes what digest_sampler writes, of other families.
template <class Calls>
bool digestBulk(unsigned int rounds, const Calls& calls)
{
    test::forEachElementType([&](auto zero) { digestBulk<decltype(zero)>(rounds, calls); });
    return std::fflush(stdout) == 0;
}

}  // namespace volux::digest
