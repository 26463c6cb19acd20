// Results of antialiasing beside those of its definition.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <type_traits>

#include "resample/Expected.h"
#include "support/SubsampleMeans.h"

namespace volux::test {

// Compares each element with the expected one, up to the first that differs. R is the result's.
template <class T, class R>
void expectEveryMean(const VxImage<T>& source, const AffineMap& map, const VxImage<R>& result,
                     const Options& options)
{
    for (unsigned int k = 0; k < result.getDepth(); ++k)
        for (unsigned int j = 0; j < result.getHeight(); ++j)
            for (unsigned int i = 0; i < result.getWidth(); ++i)
                for (unsigned int c = 0; c < result.getChannels(); ++c) {
                    const double mean =
                        meanReading(source, map, i, j, k, static_cast<int>(c), options);
                    ASSERT_TRUE(bitEqual(at(result, i, j, k, c), storedReading<R>(mean, options)))
                        << "voxel " << i << ' ' << j << ' ' << k << " channel " << c << ", "
                        << described(options) << ", " << described(map) << ", "
                        << elementTypeName<T>() << ", source: " << fieldsOf(source);
                }
}

inline Subsamples someSubsamples(Random& random)
{
    constexpr std::array<unsigned int, 8> counts{1, 1, 2, 3, 3, 4, 5, 9};
    return {anyOf(random, counts), anyOf(random, counts), anyOf(random, counts)};
}

inline Options someOptions(Random& random)
{
    Options options(anyOf(random, kInterpolators), anyOf(random, kBorders), 9);
    options.edgeExtends = random.below(2) == 0;
    options.overflow = random.below(2) == 0 ? Overflow::SATURATE : Overflow::WRAP;
    options.threads = random.between(1, 3);
    options.subsamples = someSubsamples(random);
    return options;
}

template <class T>
class Antialias : public ::testing::Test {
protected:
    template <class R>
    void compare(const VxImage<T>& source, const Grid& grid, const Options& options)
    {
        const LastWords call(described(options) + ", " + described(grid.map));
        VxImage<R> result;
        ASSERT_EQ((resample::resample<T, R>(source, grid, &result, options)), SUCCESS)
            << described(options) << ", " << described(grid.map);
        expectEveryMean(source, grid.map, result, options);
    }

    void compareEveryResult(const VxImage<T>& source, const Grid& grid, const Options& options)
    {
        compare<T>(source, grid, options);
        if constexpr (!std::is_same_v<T, double>)
            compare<double>(source, grid, options);
    }

    AffineMap someMap(const Extents& extents)
    {
        switch (random.below(4)) {
            case 0:
                return axisMap(random, extents);
            case 1:
                return halfMap(random, extents);
            case 2:
                return hugeMap(random, extents);
            default:
                return obliqueMap(random, extents);
        }
    }

    Seeded random{171};
};

}  // namespace volux::test
