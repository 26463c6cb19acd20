// The calls at single positions: samplers, and readings with their derivatives.
#pragma once

#include <vector>

#include "Corpus.h"
#include "EachPolicy.h"
#include "Stream.h"
#include "support/WrappedVolume.h"
#include "volux/resample/Resample.h"

namespace volux::digest {

template <class T, class Calls>
class PlaceRequests {
public:
    PlaceRequests(unsigned int scene, unsigned int rounds, const Calls& calls, Streams& streams)
        : rounds_(rounds),
          calls_(calls),
          random_(9000 + static_cast<unsigned int>(core::VxImage<T>().getDataType()) * kScenes +
                  scene),
          wrapped_(volume<T>(scene, random_)),
          withEachPolicy_(streams, random_, static_cast<double>(outsideValue<T>(scene, random_)))
    {
    }

    void answer()
    {
        for (unsigned int round = 0; round < rounds_; ++round) {
            const std::vector<resample::Position> places = positions();
            withEachPolicy_("sampler", false, [&](const Options& options, Stream& stream) {
                append(stream, calls_.readings(wrapped_.image, places, options));
            });
            const auto derive = [&](const Options& options, Stream& stream) {
                append(stream, calls_.gradients(wrapped_.image, places, options));
            };
            withEachPolicy_("gradient", false, derive, kInterpolators.size() - 1);
        }
    }

private:
    std::vector<resample::Position> positions()
    {
        std::vector<resample::Position> all;
        for (int n = 0; n < 40; ++n) {
            const Position p = position(random_, wrapped_.volume.extents);
            all.push_back({p.x, p.y, p.z});
        }
        return all;
    }

    const unsigned int rounds_;
    const Calls& calls_;
    Generator random_;
    const test::WrappedVolume<T> wrapped_;
    const EachPolicy withEachPolicy_;
};

}  // namespace volux::digest
