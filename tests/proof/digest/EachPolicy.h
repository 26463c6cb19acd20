// Each kernel with each border, and the streams that their results go to.
#pragma once

#include <string>

#include "Corpus.h"
#include "Stream.h"
#include "support/SingleCalls.h"
#include "volux/resample/Resample.h"

namespace volux::digest {

using resample::Options;
using test::kBorders;
using test::kInterpolators;

// Planes of labels vote, of which single calls know nothing: they have no mean.
inline resample::Slab slabFor(const Options& options, resample::Slab slab)
{
    if (options.interpolator == &resample::LABELS && slab.projection == resample::Projection::MEAN)
        slab.projection = resample::Projection::MAXIMUM;
    return slab;
}

class EachPolicy {
public:
    EachPolicy(Streams& streams, Generator& random, double outside)
        : streams_(streams), random_(random), outside_(outside)
    {
    }

    // Only on a grid does the edge end, unless the options say that it extends. Labels is the last
    // kernel.
    template <class Ask>
    void operator()(const std::string& operation, bool isGrid, const Ask& ask,
                    std::size_t kernels = kInterpolators.size()) const
    {
        const bool isWrapping = random_.below(3) == 0;
        for (std::size_t kernel = 0; kernel < kernels; ++kernel)
            for (std::size_t border = 0; border < 2; ++border)
                ask(optionsOf(kernel, border, isWrapping, isGrid),
                    streams_[operation + ", " + test::kKernelNames[kernel] + ", " +
                             test::kBorderNames[border]]);
        for (std::size_t kernel = 0; isGrid && kernel < kInterpolators.size(); ++kernel)
            ask(optionsOf(kernel, 1, isWrapping, false),
                streams_[operation + ", " + test::kKernelNames[kernel] + ", " +
                         test::kBorderNames[1] + " in view"]);
    }

private:
    Options optionsOf(std::size_t kernel, std::size_t border, bool isWrapping,
                      bool edgeExtends) const
    {
        Options options(kInterpolators[kernel], kBorders[border], outside_);
        options.overflow = isWrapping ? resample::Overflow::WRAP : resample::Overflow::SATURATE;
        options.edgeExtends = edgeExtends;
        return options;
    }

    Streams& streams_;
    Generator& random_;
    const double outside_;
};

}  // namespace volux::digest
