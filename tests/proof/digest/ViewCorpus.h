// The calls that read and write views, with results of any served type. Both programs answer them
// with the same numbers: how the voxels of a view are arranged in memory changes no bit. So only
// the program that calls volux_resample arranges them.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "Corpus.h"
#include "EachPolicy.h"
#include "Grids.h"
#include "Stream.h"
#include "support/WrappedVolume.h"
#include "volux/resample/Resample.h"

namespace volux::digest {

// How the elements of a view lie in memory.
struct Arrangement {
    std::array<unsigned int, 4> axes{0, 1, 2, 3};  // x, y, z and channels, the nearest first
    std::array<bool, 4> isFlipped{};               // of each axis
    std::int64_t gap = 0;                          // unused elements behind each axis
    bool isFar = false;                            // more than 2^32 elements behind the last axis
};

inline Arrangement someArrangement(Generator& random)
{
    Arrangement made;
    for (unsigned int n = 4; n > 1; --n)
        std::swap(made.axes[n - 1], made.axes[random.below(n)]);
    for (bool& isFlipped : made.isFlipped)
        isFlipped = random.below(2) == 0;
    made.gap = random.below(3);
    return made;
}

// A volume, some of whose axes may repeat one voxel, and how a view is to hold it.
template <class T>
struct ViewedVolume {
    test::WrappedVolume<T> wrapped;
    Arrangement arrangement;

    // For x, y, z and the channels.
    std::array<bool, 4> repeats() const
    {
        const test::Volume<T>& v = wrapped.volume;
        return {v.strideX == 0, v.strideY == 0, v.strideZ == 0, v.strideC == 0};
    }
};

// A third of the volumes repeat a voxel along some axis.
template <class T>
Volume<T> repeating(Volume<T> volume, Generator& random)
{
    unsigned int* const strides[] = {&volume.strideX, &volume.strideY, &volume.strideZ,
                                     &volume.strideC};
    if (random.below(3) == 0)
        *strides[random.below(4)] = 0;
    return volume;
}

// Positions in three arrays, in voxels, in physical units or in a space of the caller's.
struct Places {
    std::vector<resample::Position> positions;
    std::int64_t stride = 1;
    resample::Units units = resample::Units::VOXELS;
    const AffineMap* toVoxels = nullptr;
};

template <class T, class Calls>
class ViewRequests {
public:
    ViewRequests(unsigned int scene, unsigned int rounds, const Calls& calls, Streams& streams)
        : rounds_(rounds),
          calls_(calls),
          random_(5000 + static_cast<unsigned int>(core::VxImage<T>().getDataType()) * kScenes +
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
            source_.arrangement.isFar = round == 0;
            resample<T>("resample of views");
            const bool isDouble = random_.below(2) == 0;
            isDouble ? resample<double>("resample into double")
                     : resample<float>("resample into float");
            isDouble ? reslice<float>("reslice into float")
                     : reslice<double>("reslice into double");
            sample("sample of arrays");
            sample("sample by a map");
        }
    }

private:
    template <class R>
    void resample(const std::string& operation)
    {
        const bool isOblique = random_.below(2) == 0;
        const Grid grid =
            gridOf(isOblique ? obliqueMap(random_, extents_) : axisMap(random_, extents_), random_);
        const Arrangement to = someArrangement(random_);
        withEachPolicy_(operation, true, [&](const Options& options, Stream& stream) {
            append(stream, calls_.template resample<R>(source_, grid, to, options));
        });
    }

    template <class R>
    void reslice(const std::string& operation)
    {
        const Planes planes = somePlanes(random_, extents_);
        const Slab slab = someSlab(random_);
        const Arrangement to = someArrangement(random_);
        withEachPolicy_(operation, true, [&](const Options& options, Stream& stream) {
            append(stream, calls_.template reslice<R>(source_, planes, to, options,
                                                      slabFor(options, slab)));
        });
    }

    void sample(const std::string& operation)
    {
        const AffineMap map = obliqueMap(random_, extents_);
        Places places = somePlaces();
        if (operation == "sample by a map") {
            places.units = resample::Units::VOXELS;
            places.toVoxels = &map;
        }
        const unsigned int kind = random_.below(3);
        withEachPolicy_(operation, false, [&](const Options& options, Stream& stream) {
            append(stream, kind == 0   ? calls_.template sample<T>(source_, places, options)
                           : kind == 1 ? calls_.template sample<float>(source_, places, options)
                                       : calls_.template sample<double>(source_, places, options));
        });
    }

    Places somePlaces()
    {
        constexpr std::array<std::int64_t, 5> strides{1, 2, -1, -3, 0};
        Places places;
        places.stride = random_.anyOf(strides);
        if (random_.below(2) == 0)
            places.units = resample::Units::PHYSICAL;
        for (int n = 0; n < 20; ++n) {
            const Position p = position(random_, extents_);
            places.positions.push_back({p.x, p.y, p.z});
        }
        if (places.stride == 0)
            places.positions.assign(places.positions.size(), places.positions[0]);
        return places;
    }

    const unsigned int rounds_;
    const Calls& calls_;
    Generator random_;
    ViewedVolume<T> source_;
    const Extents extents_;
    const EachPolicy withEachPolicy_;
};

}  // namespace volux::digest
