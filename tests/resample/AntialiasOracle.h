// Results of antialiasing beside those of its definition.
#pragma once

#include <gtest/gtest.h>

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

}  // namespace volux::test
